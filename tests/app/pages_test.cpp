// Each page at rest, pixel by pixel, against a composition out of the skin's files by the formulas
// of its layout.

#include <algorithm>

#include "engine/transport.h"
#include "panels/equaliser_presets.h"
#include "panels/main_page.h"
#include "tests/app/program_fixture.h"
#include "tests/pixel_at.h"

namespace kwo::test {
namespace {

// The interface of the default skin, its font, and the heights of the band and the group boxes.
constexpr int W = 420, H = 260, f = 12, m = f / 2, T = 48, G = 58;
constexpr int kTop = G + m, kBottom = H - T - m, kArea = kBottom - kTop;
constexpr std::uint32_t kFill = 0x323232, kKey = 0x090009, kChosen = 0x563A10, kFont = 0xF6ECD8;

enum Mode { COPY, ADD, SUB, AVE };

// Top-down pixels, 0x00BBGGRR.
struct Picture {
  Picture(int w, int h, std::uint32_t color)
      : width(w), height(h), pixels(static_cast<std::size_t>(w * h), color) {}
  explicit Picture(const SkinBitmap& bitmap) : Picture(bitmap.width, bitmap.height, 0) {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) At(x, y) = PixelAt(bitmap, x, y);
  }
  std::uint32_t& At(int x, int y) { return pixels[static_cast<std::size_t>(width * y + x)]; }
  // Draws a part of `source` with its corner at (x, y).
  void Draw(Picture& source, platform::Rectangle part, int x, int y, Mode mode) {
    for (int row = 0; row < part.height; ++row) {
      for (int column = 0; column < part.width; ++column) {
        const int px = x + column, py = y + row;
        const std::uint32_t s = source.At(part.x + column, part.y + row);
        if (s == kKey || px < 0 || py < 0 || px >= width || py >= height) continue;
        std::uint32_t& below = At(px, py);
        std::uint32_t blended = 0;
        for (int shift = 0; shift < 24; shift += 8) {
          const int a = below >> shift & 255, b = s >> shift & 255;
          const int modes[] = {b, std::min(255, a + b), std::max(0, a - b), (a + b) / 2};
          blended |= static_cast<std::uint32_t>(modes[mode]) << shift;
        }
        below = blended;
      }
    }
  }
  void Draw(Picture& source, int x, int y, Mode mode) {
    Draw(source, {0, 0, source.width, source.height}, x, y, mode);
  }

  int width, height;
  std::vector<std::uint32_t> pixels;
};

Picture Load(const std::string& file) {
  SkinBitmap bitmap;
  EXPECT_TRUE(bitmap.LoadFromFile((std::string(KWO_SOURCE) + "/skin/default/" + file).c_str()));
  return Picture(bitmap);
}

Picture Lines(const std::vector<std::string>& lines, int width, int height, std::uint32_t fill) {
  SkinBitmap canvas;
  canvas.CreateBlank(width, height, fill);
  platform::Font* font = platform::CreateFont("", f);
  for (int i = 0; i < static_cast<int>(lines.size()); ++i)
    platform::DrawTextLine({canvas.bits, canvas.stride, width, height},
                           lines[static_cast<std::size_t>(i)].c_str(), *font, kFont, 0,
                           i * (f + 1));
  platform::DeleteFont(font);
  return Picture(canvas);
}

class Pages : public Program {
 protected:
  void File(const std::string& file, int x, int y, Mode mode = COPY) {
    Picture picture = Load(file);
    frame.Draw(picture, x, y, mode);
  }
  void Strip(const std::vector<std::string>& files, int x, int y) {
    for (const std::string& file : files) {
      File(file, x, y);
      x += Load(file).width;
    }
  }
  // A button or check box of `width`: one frame of its cap, and the text behind it.
  void Control(const char* text, int width, int x, int y, int state = -1,
               std::uint32_t fill = kFill) {
    Picture cap = Load(state < 0 ? "cc-button.bmp" : "cc-checkbox.bmp");
    const int height = state < 0 ? cap.height : cap.height / 2;
    frame.Draw(cap, {0, std::max(state, 0) * height, cap.width, height}, x, y, ADD);
    Picture label = Lines({text}, width - cap.width, f, fill);
    frame.Draw(label, x + cap.width, y + (height - f) / 2, ADD);
  }
  // A slider out of its cells of `c` pixels, with its thumb's middle at `thumb`.
  void Slider(int x, int y, int length, int c, bool upright, int thumb) {
    Picture cells = Load(upright ? "cc-sliderv.bmp" : "cc-sliderh.bmp");
    Picture canvas(upright ? cells.width : length, upright ? length : cells.height, 0);
    const auto cell = [&](int number, int along, int size) {
      if (upright) {
        canvas.Draw(cells, {0, (6 - number) * c, cells.width, size}, 0, along, COPY);
      } else {
        canvas.Draw(cells, {number * c, 0, size, cells.height}, along, 0, COPY);
      }
    };
    for (int along = c; along < length - c; along += c)
      cell(4, along, std::min(c, length - c - along));
    cell(upright ? 5 : 3, 0, c);
    cell(upright ? 3 : 5, length - c, c);
    cell(1, thumb - c / 2, c);
    frame.Draw(canvas, x, y, ADD);
  }
  void Band() { File("to-groupbox.bmp", 0, H - T, SUB); }
  void BandButtons() {
    Strip({"to-bt-prev.bmp", "to-bt-stop.bmp", "to-bt-play.bmp", "to-bt-next.bmp"}, 0, H - 38);
    Strip({"to-page-ma.bmp", "to-page-pl.bmp", "to-page-mi.bmp", "to-page-in.bmp", "to-page-co.bmp",
           "to-page-wi.bmp"},
          W - 6 * 36, H - 38);
  }
  void MixerButtons() {
    Strip({"mi-page-sl.bmp", "mi-page-eq.bmp", "mi-page-ef.bmp", "mi-page-dj.bmp"},
          (W - 4 * 72) / 2, 0);
    BandButtons();
  }

  // Stops all that pulses, and begins the composition with the page's tile.
  void Begin(const Hands& hands, const char* tile) {
    hands.Wait(2000);
    TheSkinHost->VisualiserMode = VISUALISER_OFF;
    Find(WIDGET_VISUALISER)->image->FillSolid(0);
    for (int index = 0; index < SkinHost::kWidgets; ++index) {
      Widget* widget = Find(index);
      if (!widget) continue;
      const bool leftTile = index < PAGE_COUNT && index != CurrentPage;
      const bool pulses = leftTile || index == PageButton(CurrentPage) ||
                          index == WIDGET_SONG_TEXT || index == WIDGET_SUB_PAGE + MixerSubPage ||
                          index == WIDGET_ROW + playlist.currentSong - playlist.topIndex;
      EXPECT_TRUE(pulses || widget->brightness == 0) << index;
      for (int slot = 0; slot < 3; ++slot) widget->RunProgram(slot, kNoProgram);
      widget->brightness = 0;
    }
    hands.Wait(200);
    frame = Load(tile);
  }
  void Compare(const char* page) {
    const std::vector<std::uint8_t> shown = headless::WindowPixels();
    const int width = headless::Window().place.width;
    for (int y = 0; y < H; ++y) {
      for (int x = 0; x < W; ++x) {
        const std::uint8_t* p = shown.data() + 4 * (width * (kPaneY + y) + kPaneX + x);
        ASSERT_EQ(frame.At(x, y), static_cast<std::uint32_t>(p[0] | p[1] << 8 | p[2] << 16))
            << page << ' ' << x << ',' << y;
      }
    }
  }

  Picture frame{W, H, 0};
};

TEST_F(Pages, WindowHasShapeAndFrameOfItsBackground) {
  Run([](const Hands&) {
    Picture background = Load("background.bmp");
    const std::vector<std::uint8_t> shown = headless::WindowPixels();
    for (int y = 0; y < background.height; ++y) {
      for (int x = 0; x < background.width; ++x) {
        const std::uint32_t expected = background.At(x, y);
        const std::uint8_t* p = shown.data() + 4 * (y * background.width + x);
        ASSERT_EQ(expected == kKey ? 0 : 255, p[3]) << x << ',' << y;
        if (expected == kKey || Group(GROUP_INTERFACE).Contains(x, y)) continue;
        ASSERT_EQ(expected, static_cast<std::uint32_t>(p[0] | p[1] << 8 | p[2] << 16));
      }
    }
  });
}

TEST_F(Pages, MainPageShowsTimeNameAndFacts) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(1));
    const std::string wav = folder.File("long.wav");
    WriteBytes(wav, WavBytes(1, 8000, 8, "").substr(0, 40) + LittleEndian(3909 * 8000, 4));
    std::filesystem::resize_file(wav, 44 + 3909 * 8000);
    TheMixer->Slot(0)->Open(wav.c_str());
    RefreshSongLine();
    EXPECT_EQ("song0.mp3\n[WAV]-[0K]-[MONO]-[65:09]", Text(WIDGET_SONG_TEXT));
    TransportLoad();
    ShowSongTime(8345);
    EXPECT_EQ("song0.mp3\n[MP3]-[128K]-[STEREO]-[01:00]", Text(WIDGET_SONG_TEXT));
    Begin(hands, "tile-ma.bmp");
    Picture text = Lines({"song0.mp3", "[MP3]-[128K]-[STEREO]-[01:00]"}, W - f, 2 * f + 2, kFill);
    frame.Draw(text, m, 68 + m, ADD);
    File("ma-groupbox.bmp", 0, 0, AVE);
    Band();
    BandButtons();
    constexpr int d = 26, L = 48 + 10, B = 3 * d + d / 3, c = (W - 2 * (B + L)) / 2;
    File("ma-mode.bmp", c, 0);
    File("ma-wave.bmp", c + L + 2 * B + 10, 0);
    Picture digits = Load("ma-time.bmp");
    for (int i = 0; i < 6; ++i)
      frame.Draw(digits, {0, 40 * i, d, 40}, c + L + d * i + d / 3 * (i / 2), 40 / 3, COPY);
    Compare("main");
  });
}

TEST_F(Pages, PlaylistPageShowsItsRows) {
  Run([this](const Hands& hands) {
    hands.Drop(Songs(14));
    OpenPage(hands, PAGE_PLAYLIST);
    playlist.topIndex = 3;
    Press(hands, WIDGET_ROW + 1);
    Begin(hands, "tile-pl.bmp");
    File("pl-groupbox.bmp", 0, 0, AVE);
    Band();
    for (int i = 0; i < 10; ++i) {
      const int song = 3 + i;
      const std::string text = std::to_string(song + 1) + ". song" + std::to_string(song) + ".mp3";
      Control(text.c_str(), W - 3 * m - 16, m, kTop + i * (kArea / 10), -1,
              i == 1 ? kChosen : kKey);
    }
    const int way = kArea - 3 * 18;
    Slider(W - 16 - m, kTop, kArea, 18, true, static_cast<int>(3 / 4.0 * way) + 27);
    Strip({"pl-function.bmp", "pl-add.bmp", "pl-remove.bmp", "pl-itemup.bmp", "pl-itemdown.bmp"},
          (W - 5 * 64) / 2, 0);
    BandButtons();
    Compare("playlist");
  });
}

TEST_F(Pages, MixerPagesShowWhatIsSet) {
  Run([this](const Hands& hands) {
    OpenPage(hands, PAGE_MIXER);
    constexpr int L = W / 5 * 2, R = (H - T - G) / 4;
    SliderVol = 40, SliderPan = -20, SliderSpd = 125;
    EffectTE = 2, EffectVR = 1, EffectEQSwitch = 1, transport.playMode = 2, transport.shuffleOn = 1;
    EqPresetValues[0][16] = 0.7f;
    for (int canvas = 0; canvas < 2; ++canvas) ApplyMixerPage();  // nothing of it stays
    for (int i = 0; i < 17; ++i) EqPresetValues[0][i] = 0.5f + static_cast<float>(i) / 16;
    ApplyMixerPage();
    Begin(hands, "tile-mi.bmp");
    File("mi-groupbox.bmp", 0, 0, AVE);
    Band();
    const std::pair<const char*, float> kSliders[] = {
        {"Volume = 40", 0.2f}, {"Pan = -20", 0.4f}, {"Speed = 125", 1.0f}};
    for (int k = 0; k < 3; ++k) {
      const auto& [text, value] = kSliders[k];
      Control(text, L, m, G + (k + 1) * R - 7);
      Slider(W / 2 - m, G + (k + 1) * R - 9, W / 2, 18, false,
             static_cast<int>(value * (W / 2 - 54) + 27));
    }
    MixerButtons();
    Compare("sliders");

    OpenSubPage(hands, 1);
    Begin(hands, "tile-mi.bmp");
    File("mi-groupbox.bmp", 0, 0, AVE);
    constexpr int E = kArea / 3 * 2, Y = kTop + E + m;
    Picture curve(192, E, kKey);
    for (int band = 0; band < 16; ++band) {
      const int t = static_cast<int>((1 - static_cast<float>(band) / 16) * E);
      const std::uint32_t pens[] = {0xFA78A0, 0xFAA0A0, 0xFAC8A0, 0xFAF0A0};
      for (int y = E; y >= 0; y -= 2)
        for (int x = 0; x < 10 && y < E; ++x)
          curve.At(1 + 12 * band + x, y) = y > t ? pens[band / 4] : 0x646464;
    }
    for (int x = 0; x < 192; ++x) curve.At(x, 0) = 0xFFFFFF;  // the master value, at the top
    for (int y = 0; y < 4; ++y) curve.At(0, y) = curve.At(191, y) = 0xFFFFFF;
    frame.Draw(curve, (W - 192) / 2, kTop, COPY);
    Band();
    Control("ON", L, m, Y + m + f);
    Control("RESET", L, W - L - m, Y + m + f);
    Picture name = Lines({"1. User Preset"}, 160, f, kFill);
    frame.Draw(name, (W - 160) / 2, Y + (18 - f) / 2, ADD);
    File("mi-prev.bmp", m, Y, ADD);
    File("mi-next.bmp", W - 118 - m, Y, ADD);
    MixerButtons();
    Compare("equaliser");

    OpenSubPage(hands, 2);
    Begin(hands, "tile-mi.bmp");
    File("mi-groupbox.bmp", 0, 0, AVE);
    Band();
    const std::pair<const char*, int> kEffects[] = {{"Crystalizer", 0},
                                                    {"T. Enhancer-2", 1},
                                                    {"Vocal Reducer", 1},
                                                    {"Wide Stereo", 0},
                                                    {"Limiter", 0}};
    for (int k = 0; k < 5; ++k)
      Control(kEffects[k].first, W / 2, W / 4, G - f + (k + 1) * (kArea / 5), kEffects[k].second);
    MixerButtons();
    Compare("effects");

    OpenSubPage(hands, 3);
    Begin(hands, "tile-mi.bmp");
    File("mi-groupbox.bmp", 0, 0, AVE);
    Band();
    const std::pair<const char*, int> kModes[] = {
        {"DJ - None", -1}, {"Play Mode - Unselected", -1}, {"Repeat", 0}, {"Shuffle", 1}};
    for (int k = 0; k < 4; ++k)
      Control(kModes[k].first, 4 * (W / 6), W / 6, kTop - m - f + (k + 1) * (kArea / 4),
              kModes[k].second);
    MixerButtons();
    Compare("DJ");
  });
}

TEST_F(Pages, WindowInfoAndConfigPagesStandOnTheirTiles) {
  Run([this](const Hands& hands) {
    OpenPage(hands, PAGE_WINDOW);
    Press(hands, WIDGET_AUTO);
    Begin(hands, "tile-wi.bmp");
    Band();
    const char* texts[] = {"ALWAYS ON TOP [OFF]", "AUTO [HIDE]", "MINIMIZE", "QUIT"};
    for (int n = 1; n <= 4; ++n) Control(texts[n - 1], W / 3 * 2, W / 6, (H - T) / 6 * n);
    BandButtons();
    Compare("window");
    OpenPage(hands, PAGE_INFO);
    Begin(hands, "tile-in.bmp");
    Band();
    BandButtons();
    Compare("info");
    // A tile of another size drifts up and to the left, over and over.
    OpenPage(hands, PAGE_CONFIG);
    Begin(hands, "tile-co.bmp");
    Picture tile = Load("tile-co.bmp");
    const Widget& drifting = *Find(TileOf(PAGE_CONFIG));
    EXPECT_LT(drifting.x, 0);
    frame = Picture(W, H, 0);
    for (int y = drifting.y; y < H + kPaneY; y += tile.height)
      for (int x = drifting.x; x < W + kPaneX; x += tile.width) frame.Draw(tile, x, y, COPY);
    Band();
    BandButtons();
    Compare("config");
  });
}

}  // namespace
}  // namespace kwo::test
