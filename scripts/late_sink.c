// A stand-in for a slow sink: tells LATE_SINK milliseconds of delay more than there is, at 44100 Hz.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>

int snd_pcm_delay(void* pcm, long* frames) {
  static int (*delay)(void*, long*);
  if (!delay) delay = (int (*)(void*, long*))dlsym(RTLD_NEXT, "snd_pcm_delay");
  const int result = delay(pcm, frames);
  if (result >= 0) *frames += atol(getenv("LATE_SINK")) * 44100 / 1000;
  return result;
}
