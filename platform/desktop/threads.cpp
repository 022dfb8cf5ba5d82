#include "platform/threads.h"

#include <pthread.h>
#include <sched.h>

#include <exception>
#include <thread>

namespace kwo::platform {

struct Thread {
  std::thread thread;
};

Thread* StartThread(void (*body)(void*), void* argument, const char* name) {
  try {
    auto* started = new Thread{std::thread(body, argument)};
    pthread_setname_np(started->thread.native_handle(), name);
    return started;
  } catch (const std::exception&) {
    return nullptr;
  }
}

void JoinThread(Thread* thread) {
  if (!thread) return;
  thread->thread.join();
  delete thread;
}

void LeaveThread(Thread* thread) {
  if (!thread) return;
  thread->thread.detach();
  delete thread;
}

void SetThreadPriority(ThreadPriority priority) {
  sched_param parameters{};
  const bool critical = priority == ThreadPriority::kTimeCritical;
  const int policy = critical ? SCHED_RR : SCHED_OTHER;
  if (critical) parameters.sched_priority = sched_get_priority_min(SCHED_RR);
  pthread_setschedparam(pthread_self(), policy, &parameters);
}

}  // namespace kwo::platform
