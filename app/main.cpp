#include "app/application.h"
#include "app/running_copy.h"
#include "platform/process.h"

int main(int count, char** arguments) {
  return kwo::platform::RunProcess(count, arguments, kwo::RunApplication, kwo::SaveState,
                                   [] { kwo::AwaitRunningCopy(1500); });
}
