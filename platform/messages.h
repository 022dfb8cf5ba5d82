#pragma once

/// The main thread's message queue.
namespace kwo::platform {

constexpr int kMessageQuit = 0x0012;

struct Message {
  int id;
  int wParam;
  int lParam;
};

/// Ends the message loop: `GetMessage` gives false once the messages before have been taken.  Any
/// thread.
void PostQuitMessage(int exitCode);

/// Appends a message.  Any thread.
void PostMessage(const Message& message);

/// Looks for a message without taking it; false if there is none.  Main thread.
bool PeekMessage(Message& message);

/// Waits for a message and takes it; false when it is the quit message.  Main thread.
bool GetMessage(Message& message);

/// Waits until there is a message.  Main thread.
void WaitMessage();

}  // namespace kwo::platform
