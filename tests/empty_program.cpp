// A room of the program is linked with it, to see that it needs nothing above.
int main() {}
