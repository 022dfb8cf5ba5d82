// The whole program before a user who follows a script of any bytes.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/files.h"
#include "platform/headless/headless.h"
#include "tools/drive_script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kwo;
  constexpr std::size_t kMostSteps = 30;
  constexpr int kLongestRun = 30000;
  std::vector<tools::ScriptStep> steps;
  std::string error;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (!tools::ParseScript(text, steps, error) || steps.size() > kMostSteps) return 0;
  const std::string song =
      platform::FromMachinePath((std::string(KWO_DATA) + "/tests/data/joint128.mp3").c_str());
  if (tools::MakeHarmless(steps, song) > kLongestRun) return 0;
  const std::string folder = tools::MakeProgramFolder();
  headless::UseRegistryFile("");
  headless::ClearPlayedSound();
  const bool ran = tools::RunScript(steps, folder, folder, error);
  const bool saved = std::filesystem::exists(folder + "/HISTORY.PLA");
  std::filesystem::remove_all(folder);
  if (!ran || !saved) std::abort();
  return 0;
}
