#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "tools/skin/app_icon.h"
#include "tools/skin/controls.h"
#include "tools/skin/hours.h"
#include "tools/skin/icons.h"

namespace kwo::tools {
namespace {

struct File {
  const char* name;
  std::function<Picture()> paint;
};

int WriteAll(const std::string& folder) {
  Picture ma = PaintHour(FIRST_LIGHT), pl = PaintHour(MOON), mi = PaintHour(AFTERGLOW);
  const File files[] = {
      {"background", [&] { return PaintBackground(ma); }},
      {"tile-ma", [&] { return ma; }},
      {"tile-pl", [&] { return pl; }},
      {"tile-mi", [&] { return mi; }},
      {"tile-in", [] { return PaintHour(SUNSET); }},
      {"tile-wi", [] { return PaintHour(AURORA); }},
      {"tile-co", PaintCaustics},
      {"to-groupbox", TopGroupBox},
      {"ma-groupbox", [&] { return GroupBox(ma, 68, true); }},
      {"pl-groupbox", [&] { return GroupBox(pl, 58, false); }},
      {"mi-groupbox", [&] { return GroupBox(mi, 58, false); }},
      {"to-bt-prev", [] { return TransportIcon("prev"); }},
      {"to-bt-stop", [] { return TransportIcon("stop"); }},
      {"to-bt-play", [] { return TransportIcon("play"); }},
      {"to-bt-next", [] { return TransportIcon("next"); }},
      {"to-page-ma", [] { return PageIcon("ma"); }},
      {"to-page-pl", [] { return PageIcon("pl"); }},
      {"to-page-mi", [] { return PageIcon("mi"); }},
      {"to-page-in", [] { return PageIcon("in"); }},
      {"to-page-co", [] { return PageIcon("co"); }},
      {"to-page-wi", [] { return PageIcon("wi"); }},
      {"ma-mode", [&] { return MainIcon("mode", ma); }},
      {"ma-wave", [&] { return MainIcon("wave", ma); }},
      {"ma-time", [&] { return Digits(ma); }},
      {"pl-function", [&] { return PlaylistIcon("function", pl); }},
      {"pl-add", [&] { return PlaylistIcon("add", pl); }},
      {"pl-remove", [&] { return PlaylistIcon("remove", pl); }},
      {"pl-itemup", [&] { return PlaylistIcon("itemup", pl); }},
      {"pl-itemdown", [&] { return PlaylistIcon("itemdown", pl); }},
      {"mi-page-sl", [&] { return MixerIcon("sl", mi); }},
      {"mi-page-eq", [&] { return MixerIcon("eq", mi); }},
      {"mi-page-ef", [&] { return MixerIcon("ef", mi); }},
      {"mi-page-dj", [&] { return MixerIcon("dj", mi); }},
      {"mi-prev", [] { return PresetStep(false); }},
      {"mi-next", [] { return PresetStep(true); }},
      {"cc-button", Lamp},
      {"cc-checkbox", Toggles},
      {"cc-sliderh", HorizontalSlider},
      {"cc-sliderv", VerticalSlider},
  };
  for (const File& file : files) {
    const std::string path = folder + "/" + file.name + ".bmp";
    Picture picture = file.paint();
    if (picture.Save(path)) continue;
    std::fprintf(stderr, "make_skin: %s can't be written\n", path.c_str());
    return 1;
  }
  return 0;
}

int WriteIcons(const std::string& folder) {
  for (int size : {16, 24, 32, 48, 64, 128, 256}) {
    const std::string path = folder + "/kwo-" + std::to_string(size) + ".png";
    if (SaveAppIcon(path, size)) continue;
    std::fprintf(stderr, "make_skin: %s can't be written\n", path.c_str());
    return 1;
  }
  return 0;
}

}  // namespace
}  // namespace kwo::tools

int main(int count, char** arguments) {
  constexpr char kUsage[] =
      "usage: make_skin OUTDIR\n"
      "       make_skin --icons OUTDIR\n"
      "Paints the 39 pictures of the default skin, or the program's icon in all sizes, into an\n"
      "existing folder.\n";
  const bool icons = count == 3 && std::strcmp(arguments[1], "--icons") == 0;
  if (count == 2 && (!std::strcmp(arguments[1], "-h") || !std::strcmp(arguments[1], "--help"))) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (count != 2 && !icons) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  return icons ? kwo::tools::WriteIcons(arguments[2]) : kwo::tools::WriteAll(arguments[1]);
}
