// A script of any bytes: refused, or followed by a user before the whole program.  A run takes a
// second or two, so that one script in so many is run, by its own bytes.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/files.h"
#include "platform/headless/headless.h"
#include "tools/drive_script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kwo;
  constexpr std::size_t kMostSteps = 30;
  constexpr int kLongestRun = 30000;
  constexpr std::size_t kRunOneIn = 64;
  std::vector<tools::ScriptStep> steps;
  std::string error;
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (!tools::ParseScript(text, steps, error) || steps.size() > kMostSteps) return 0;
  const std::string song =
      platform::FromMachinePath((std::string(KWO_DATA) + "/tests/data/joint128.mp3").c_str());
  if (tools::MakeHarmless(steps, song) > kLongestRun) return 0;
  if (std::hash<std::string>()(text) % kRunOneIn != 0) return 0;
  const std::string folder = tools::MakeProgramFolder();
  headless::UseRegistryFile("");
  headless::ClearPlayedSound();
  const bool ran = tools::RunScript(steps, folder, folder, error);
  const bool saved = std::filesystem::exists(folder + "/HISTORY.PLA");
  std::filesystem::remove_all(folder);
  if (!ran || !saved) std::abort();
  return 0;
}
