#include "panels/application_state.h"

namespace kwo {

char AppDir[platform::kMostBytes + 1];
char SkinName[256];
SharedText InputText(kInputTextSize);
Shared<int> CurrentPage;
int MixerSubPage = 0;
int WindowFlags = 0;
Shared<int> AppReady;

}  // namespace kwo
