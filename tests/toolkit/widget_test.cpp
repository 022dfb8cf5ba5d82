#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "tests/allocations.h"
#include "tests/pixel_at.h"
#include "tests/support.h"
#include "toolkit/skin_host.h"

namespace kwo {
namespace {

using test::PixelAt;

// A host whose window of 100 by 80 has an interface of 60 by 40 at (20, 10), without any skin.
class Toolkit : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(1, host.CreateMainWindow("none", nullptr, 0, 0, 100, 80, 20));
    host.groups[0].PlaceGroup(nullptr, 20, 10, 0, 60, 40, 0, 0);
    host.groups[0].visible = 1;
    platform::ShowWindow(platform::WindowShow::kShow);
  }

  // A visible picture of one colour in the interface's corner.
  Widget& Canvas(int index, int width, int height, std::uint32_t color = 0, int group = 0) {
    EXPECT_EQ(1, host.CreateCanvasWidget(index, color, width, height, IMAGE_WIDGET, group));
    Widget& widget = *host.GetWidget(index);
    widget.image->key = kNoKey;
    widget.SetPlace(0, 0);
    widget.visible = 1;
    return widget;
  }

  // A slider at the index of its kind, whose cells of 2 pixels have their number for a colour: from
  // the left in the top line, from the bottom in the last column.
  Widget& Slider(int kind, int width, int height) {
    Widget& slider = Canvas(kind, width, height);
    slider.kind = kind;
    slider.cap->CreateBlank(14, 14, 0);
    for (int i = 0; i < 7; ++i)
      slider.cap->FillRectangle(2 * i, 0, 14, 14 - 2 * i, static_cast<std::uint32_t>(i));
    return slider;
  }

  // No frame of any test may ask for memory.
  void DrawFrames(int count = 1) {
    const long before = test::Allocations();
    for (int i = 0; i < count; ++i) host.RedrawFrame();
    EXPECT_EQ(before, test::Allocations());
  }

  SkinHost host;
};

TEST_F(Toolkit, TableGivesNullOutsideAndReplacesWithin) {
  EXPECT_EQ(nullptr, host.GetWidget(-1));
  EXPECT_EQ(nullptr, host.GetWidget(512));
  EXPECT_EQ(0, host.CreateCanvasWidget(512, 0, 1, 1, 0, 0));
  EXPECT_EQ(0, host.CreateCanvasWidget(5, 0, 1, 1, 0, 32));
  Canvas(511, 4, 4).SetRamp(3, 1, 2, 1, 0);
  EXPECT_FALSE(IsRamp(Canvas(511, 4, 4).programs[3]));
  EXPECT_EQ(0, host.CreateImageWidget(7, "missing.bmp", 0, 0, IMAGE_WIDGET, 0));
  host.GetWidget(7)->visible = 1;
  DrawFrames();
  EXPECT_EQ(nullptr, host.HitTest(25, 15));
}

TEST_F(Toolkit, HigherLayerThenGroupThenLayerThenIndexIsHit) {
  for (int group : {1, 2, 3}) {
    host.groups[group].PlaceGroup(&host.groups[0], 0, 0, group == 3 ? 1 : 2, 60, 40, 0, 0);
    host.groups[group].visible = 1;
  }
  for (auto [index, group, layer] :
       {std::tuple{400, 3, 0}, {300, 1, 0}, {10, 2, 0}, {9, 2, 1}, {11, 2, 1}}) {
    Widget& widget = Canvas(index, 20, 20, 0, group);
    widget.layer = layer;
    EXPECT_EQ(&widget, host.HitTest(21, 11)) << index;
    EXPECT_EQ(&widget, host.HitTest(39, 29)) << index;
  }
  for (auto [x, y] : {std::pair{20, 15}, {40, 15}, {25, 10}, {25, 30}})
    EXPECT_EQ(nullptr, host.HitTest(x, y)) << "the first column and row are not the widget's";
  host.groups[2].visible = 0;
  EXPECT_EQ(host.GetWidget(300), host.HitTest(25, 15));
}

TEST_F(Toolkit, GroupsAreCutByTheRootAlone) {
  WidgetGroup& middle = host.groups[3];
  middle.PlaceGroup(&host.groups[0], 5, 5, 3, 10, 10, 0, 0);
  // Place and size, and along both axes the raw place, the cut place and the cut size: to the
  // root's edge, beyond the parent's.
  const std::tuple<int, int, std::vector<int>> kCases[] = {{8, 100, {33, 33, 47, 23, 23, 27}},
                                                           {-15, 30, {10, 20, 20, 0, 10, 20}},
                                                           {70, 30, {95, 95, 0, 85, 85, 0}}};
  for (const auto& [place, size, expected] : kCases) {
    WidgetGroup& inner = host.groups[4];
    inner.PlaceGroup(&middle, place, place, 3, size, size, 0, 0);
    EXPECT_EQ(expected, (std::vector<int>{inner.rawX, inner.absX, inner.clipWidth, inner.rawY,
                                          inner.absY, inner.clipHeight}));
  }
}

TEST_F(Toolkit, ValueIsShownStoredAndGiven) {
  Canvas(CHECK_WIDGET, 4, 4).kind = CHECK_WIDGET;
  host.GetWidget(CHECK_WIDGET)->SetFrameCount(0, 2);
  Slider(VERTICAL_SLIDER, 14, 20);
  Slider(HORIZONTAL_SLIDER, 21, 14);
  // The value to apply, the one that comes of it, and the box's frame or the slider's cells.
  const std::tuple<int, float, float, float, std::string> kCases[] = {
      {CHECK_WIDGET, 2, 1, 1, "1"},
      {CHECK_WIDGET, -1, 0, 1, "1"},
      {CHECK_WIDGET, 2, 0, 0, "0"},
      {CHECK_WIDGET, 5, 0, 0, "0"},
      {VERTICAL_SLIDER, 0, 0.5f, 0.5f, "33444444411444444455"},
      {VERTICAL_SLIDER, 2, -1, 0.5f, "22444444411444444455"},
      {VERTICAL_SLIDER, 1, -1, 0.5f, "33444444411444444466"},
      {VERTICAL_SLIDER, -1, 0, 0, "33444444444444441166"},
      {VERTICAL_SLIDER, 3, 1.5f, 1, "33004444444444444455"},
      {HORIZONTAL_SLIDER, 1, 0, 0, "221144444444444444455"},
      {HORIZONTAL_SLIDER, 2, 1, 1, "334444444444444441166"},
      {HORIZONTAL_SLIDER, 3, -1, 1, "334444444444444440055"},
  };
  for (const auto& [kind, part, applied, result, expected] : kCases) {
    Widget& widget = *host.GetWidget(kind);
    EXPECT_FLOAT_EQ(result, widget.ApplyValue(part, applied));
    EXPECT_FLOAT_EQ(result, widget.value);
    std::string shown = kind == CHECK_WIDGET ? std::to_string(widget.frame) : "";
    for (int i = 0; shown.size() < expected.size(); ++i)
      shown += std::to_string(kind == VERTICAL_SLIDER ? PixelAt(*widget.image, 13, 19 - i)
                                                      : PixelAt(*widget.image, i, 0));
    EXPECT_EQ(expected, shown);
    EXPECT_EQ(kind == CHECK_WIDGET ? 2 : -1, widget.ProgramInSlot(1)) << "the nudge";
  }
  EXPECT_EQ(0.0f, Slider(HORIZONTAL_SLIDER, 6, 14).ApplyValue(0, 1)) << "too short for any";
  EXPECT_EQ(1.0f, Slider(HORIZONTAL_SLIDER, 7, 14).ApplyValue(0, 1));
}

TEST_F(Toolkit, EveryMotionModeActsAtItsEndsAndBeginsAnewOnceItEnded) {
  // How far each kind of motion goes: a path at one speed, one that grows faster by 1 each step,
  // one without steps, and a ramp.
  constexpr int kEnds[] = {4, 6, 0, 4}, kFaster = 1, kRamp = 3;
  // What each kind shows frame by frame; a stop where it frees its slot and is started again.
  const std::tuple<int, std::vector<std::string>> kModes[] = {
      {MOTION_ONCE, {"1234.12", "136.13", "0.0.", "1234.12"}},
      {MOTION_LOOP, {"123412", "136136", "00", "1230123"}},
      {MOTION_TO_AND_FRO, {"1234321012", "1365301365", "00", "1234321012"}},
      {MOTION_SNAP_BACK, {"1230.12", "130.13", "0.0.", "1230.12"}},
      {MOTION_OUT_AND_BACK, {"12343210.12", "136530.13", "0.0.", "12343210.12"}},
      {MOTION_FADE_AND_HIDE, {"", "", "", "123444"}},
  };
  for (const auto& [mode, values] : kModes)
    for (std::size_t kind = 0; kind < 4; ++kind) {
      Widget& widget = Canvas(1, 4, 4);
      const int end = kEnds[kind];
      widget.SetPath(2, 0, 0, end, -end / 2, end, kind == kFaster ? 1 : 0, mode);
      if (kind == kRamp) widget.SetRamp(2, 0, end, 1, mode);
      widget.RunProgram(1, 2);
      std::string shown;
      while (shown.size() < values[kind].size()) {
        DrawFrames();
        shown += std::to_string(kind == kRamp ? widget.brightness : widget.x);
        EXPECT_EQ(-widget.x / 2, widget.y) << "towards 0";
        if (widget.ProgramInSlot(1) == 2) continue;
        shown += '.';
        widget.RunProgram(1, 2);
      }
      EXPECT_EQ(values[kind], shown) << mode;
      EXPECT_EQ(mode != MOTION_FADE_AND_HIDE || kind != kRamp, widget.visible == 1);
    }
}

TEST_F(Toolkit, PlaceAtRestIsWhereTheEntranceEndsCutToTheInterface) {
  host.groups[1].PlaceGroup(&host.groups[0], 60, 5, 0, 30, 20, 0, 0);
  host.groups[1].SetWays({{60, 5}, {40, 5}, {60, 5}}, 2, 0, 0);
  host.groups[1].visible = 1;
  Widget& inside = Canvas(1, 8, 6, 0, 1);
  Widget& moving = Canvas(2, 8, 6);
  moving.SetPlace(60, 40);
  moving.SetWays({{60, 40}, {56, 4}, {60, 40}}, 2, 0, 0);
  const auto shows = [&](bool first, bool second) {
    EXPECT_EQ(first, inside.OnScreen());
    EXPECT_EQ(second, moving.OnScreen());
    EXPECT_EQ((platform::Rectangle{60, 15, 8, 6}), inside.RestPlace());
    EXPECT_EQ((platform::Rectangle{76, 14, 4, 6}), moving.RestPlace());
  };
  shows(false, false);
  EXPECT_TRUE(host.AtRest());
  for (MotionOwner* owner :
       {static_cast<MotionOwner*>(&host.groups[1]), static_cast<MotionOwner*>(&moving)}) {
    const bool first = owner != &moving;
    owner->RunProgram(kMoveSlot, kEnterProgram);
    shows(true, !first);
    EXPECT_FALSE(host.AtRest());
    DrawFrames(4);
    shows(true, !first);
    EXPECT_TRUE(host.AtRest());
  }
  moving.RunProgram(kMoveSlot, kLeaveProgram);
  shows(true, false);
  host.groups[1].RunProgram(kMoveSlot, kLeaveProgram);
  shows(false, false);
  DrawFrames(4);
  shows(false, false);
}

TEST_F(Toolkit, TilesRepeatDriftPulseAndCrossFade) {
  const auto pixel = [this](int x, int y) { return PixelAt(*host.canvas, x, y); };
  Widget& still = Canvas(0, 60, 40, 0x646464);
  Widget& drifting = Canvas(1, 10, 10, 0x323232);
  drifting.image->FillRectangle(0, 0, 1, 1, 0);
  EXPECT_EQ(-1, host.ShowTile(0, 0));
  DrawFrames(14);
  EXPECT_EQ(0x646464u, pixel(79, 49));
  EXPECT_EQ(0, still.x);
  EXPECT_EQ(0, host.ShowTile(1, 0));
  DrawFrames();
  EXPECT_EQ(0x505050u, pixel(79, 49)) << "the new one is still dark, the old one added";
  DrawFrames(13);
  EXPECT_EQ(0x323232u, pixel(79, 49));
  EXPECT_EQ(0u, pixel(76, 46)) << "the corner of the last repetition, after 14 steps of 10";
  EXPECT_EQ(0, still.visible);
  EXPECT_EQ(1, host.ShowTile(1, 1));
  DrawFrames(2);
  EXPECT_EQ(-72, drifting.brightness);
  DrawFrames(19);
  EXPECT_EQ(-4, drifting.brightness);
  EXPECT_EQ(-1, host.ShowTile(-1, 0));
  EXPECT_EQ(0, drifting.visible);
  host.CreateImageWidget(2, "missing.bmp", 0, 0, IMAGE_WIDGET, 0);
  host.ShowTile(2, 0);
  DrawFrames();
  Canvas(3, 1, 1, 0x646464).SetPlace(kUnplaced, kUnplaced);
  host.currentTile = 3;
  DrawFrames();
  EXPECT_EQ(0x646464u, pixel(79, 49)) << "a tile of one pixel, drawn before its way has begun";
  Canvas(4, 4, 8, 0x323232).SetPlace(0, -6);
  host.GetWidget(4)->frameCount = 2;
  host.currentTile = 4;
  DrawFrames();
  EXPECT_EQ(0x323232u, pixel(20, 12)) << "a tile that leaves gaps, its first one above the frame";
}

// Draws a widget pixel by pixel, by a loop that knows nothing of rows, vectors or clipping.
void DrawSlowly(const Widget& widget, std::vector<std::uint8_t>& frame) {
  const SkinBitmap& image = *widget.image;
  for (int row = 0; row < widget.height; ++row)
    for (int i = 0; i < 3 * widget.width; ++i) {
      const int x = 20 + widget.x - widget.offsetX + i / 3;
      const int y = 10 + widget.y - widget.offsetY + row;
      const int line = row + widget.frame * widget.height;
      if (x < 20 || x >= 80 || y < 10 || y >= 50 || PixelAt(image, i / 3, line) == image.key)
        continue;
      const int raw = image.bits[(image.height - 1 - line) * image.stride + i];
      std::uint8_t& below = frame[static_cast<std::size_t>(300 * (79 - y) + 3 * x + i % 3)];
      const int d = below, s = std::clamp(raw + widget.brightness, 0, 255);
      const int modes[] = {s, std::min(d + s, 255), std::max(d - s, 0), (d + s) / 2, s};
      below = static_cast<std::uint8_t>(modes[widget.blendMode]);
    }
}

TEST_F(Toolkit, FrameEqualsThePixelByPixelComposition) {
  constexpr std::uint32_t kKey = 0x123456;
  std::mt19937 random(7);
  const auto next = [&](int range) { return static_cast<int>(random() >> 1) % range; };
  const auto canvas = [&] {
    return std::vector<std::uint8_t>(host.canvas->bits, host.canvas->bits + 300 * 80);
  };
  for (int round = 0; round < 60; ++round) {
    host.RemoveAllWidgets();
    for (int i = 0; i < 12; ++i) {
      const int frames = 1 + next(4), frame = next(frames), height = 1 + next(50);
      Widget& w = Canvas(next(512), 1 + next(80), frames * height);
      w.SetFrameCount(0, frames);
      w.SetFrame(frame);
      w.SetFrame(frames);  // there is none of this number
      EXPECT_TRUE(w.frame == frame && w.height == height);
      w.SetPlace(next(90) - 20, next(70) - 20);
      // Noise with whole keys in it, and with colours that share one or two of the key's bytes.
      for (int j = 0; j < w.image->stride * w.image->height; ++j)
        w.image->bits[j] = static_cast<std::uint8_t>(
            next(2) ? next(256) : kKey >> (16 - 8 * (j % w.image->stride % 3)));
      w.image->Touch();
      w.image->key = next(2) ? kKey : kNoKey;
      w.brightness = next(2) ? next(700) - 350 : 0;
      w.blendMode = next(5);
      w.layer = next(4);
      w.offsetX = next(5);
      w.offsetY = next(5);
    }
    std::vector<std::uint8_t> expected = canvas();
    for (int layer = 0; layer < 4; ++layer)
      for (int index = 0; index < 512; ++index)
        if (const Widget* w = host.GetWidget(index); w && w->layer == layer)
          DrawSlowly(*w, expected);
    DrawFrames();
    ASSERT_EQ(expected, canvas()) << round;
  }
}

// Every frame is drawn a second time, whole, over what its twin was before.
TEST_F(Toolkit, FrameComposedInPartsEqualsTheWholeOne) {
  std::mt19937 random(11);
  const auto next = [&](int range) { return static_cast<int>(random() >> 1) % range; };
  const auto color = [&] { return static_cast<std::uint32_t>(next(1 << 24)); };
  host.SetSkinFont("Tahoma", 8, 0);
  host.background = std::make_unique<SkinBitmap>();
  host.background->CreateBlank(100, 80, 0x203040);
  host.groups[1].PlaceGroup(&host.groups[0], 10, 5, 1, 30, 20, 0, 0);
  host.groups[1].visible = 1;
  SkinBitmap twin;
  twin.CreateBlank(100, 80, 0);
  twin.CopyFrom(host.canvas.get(), 0, 0, 100, 80);
  int inParts = 0;
  for (int frame = 0; frame < 6000; ++frame) {
    if (frame % 100 == 0) {
      for (int i = 0; i < 8; ++i) Canvas(i, 10, 8, color(), i % 2).frameCount = 2;
      host.currentTile = host.previousTile = -1;
    }
    for (int change = next(4); change > 0; --change) {
      const int index = next(8);
      Widget& w = *host.GetWidget(index);
      switch (next(16)) {
        case 0:
          w.image->FillRectangle(next(10), next(8), 1 + next(10), 1 + next(8), color());
          break;
        case 1:
          w.SetPlace(next(80) - 10, next(60) - 10);
          break;
        case 2:
          w.brightness = next(3) ? 0 : next(500) - 250;
          break;
        case 3:
          w.blendMode = next(4);
          break;
        case 4:
          w.visible = next(2);
          break;
        case 5:
          w.image->key = next(2) ? PixelAt(*w.image, 0, 0) : kNoKey;
          break;
        case 6:
          w.SetFrame(next(2));
          break;
        case 7:
          w.layer = next(4);
          break;
        case 8:
          w.group = next(2);
          break;
        case 9:
          host.groups[1].x = next(60) - 10;
          break;
        case 10:
          // One that leads out of the interface's frame.
          host.groups[1].parent = next(40) ? &host.groups[0] : nullptr;
          break;
        case 11:
          if (next(20) == 0) host.ShowTile(next(10) - 2, next(2));
          break;
        case 12:
          // A tile that stands still, and may leave gaps or let the old frame through.
          host.currentTile = next(2) ? -1 : index;
          host.previousTile = -1;
          w.SetFrame(0);
          w.frameCount = 1 + next(2);
          w.group = 0;
          w.image->key = next(2) ? PixelAt(*w.image, 0, 0) : kNoKey;
          w.width = w.image->width + next(2);
          w.SetPlace(-next(20), -next(20));
          break;
        case 13:
          w.SetLabelAt("a", color(), kNoKey, 0, 0);
          break;
        case 14:
          if (next(20) == 0) Canvas(next(8), 1 + next(70), 1 + next(50), color()).frameCount = 2;
          break;
        default:
          if (next(40) == 0) host.canvas->FillRectangle(next(90), next(70), 20, 20, color());
          if (next(40) == 0) host.background->FillSolid(color());
          twin.CopyFrom(host.canvas.get(), 0, 0, 100, 80);
          break;
      }
    }
    DrawFrames();
    host.compositor.ComposeWhole(twin);
    ASSERT_TRUE(std::equal(twin.bits, twin.bits + 300 * 80, host.canvas->bits)) << frame;
    // And the window shows the same of the interface, and no more.
    platform::ShowPresented();
    const std::vector<std::uint8_t> shown = headless::WindowPixels();
    for (int y = 0; y < 80; ++y)
      for (int x = 0; x < 100; ++x) {
        const std::uint8_t* pixel = &shown[static_cast<std::size_t>(4 * (100 * y + x))];
        const bool inside = host.groups[0].Contains(x, y);
        ASSERT_EQ(inside ? PixelAt(*host.canvas, x, y) : 0,
                  pixel[2] << 16 | pixel[1] << 8 | pixel[0])
            << frame;
      }
    inParts += headless::Window().lastPresented != platform::Rectangle{20, 10, 60, 40};
  }
  EXPECT_LT(1000, inParts);
}

TEST_F(Toolkit, PausedThreadLeavesTheTableAloneAndGoesOnAfterwards) {
  Widget& widget = Canvas(1, 4, 4);
  widget.SetPath(0, 0, 0, 1000, 0, 1000, 0, MOTION_ONCE);
  widget.RunProgram(0, 0);
  host.StartRedraw();
  for (bool paused : {false, true, false}) {
    const int x = widget.x;
    platform::Sleep(500);
    EXPECT_EQ(paused ? 0 : 10, widget.x - x) << "500 ms of 20 frames a second";
    host.PauseRedraw();
  }
  host.StopRedraw();
  EXPECT_EQ(0, host.threadAlive);
}

TEST(PcmRing, GivesWhatWasWrittenRoundItsEndAndThenTheWhole) {
  PcmRing ring;
  const std::vector<std::int16_t> sound = test::Noise(20000);
  std::vector<std::int16_t> got(PcmRing::kValues);
  for (int from = 0; from < 20000; from += 4000) {
    ring.Write(sound.data() + from, 4000);
    ASSERT_EQ(4000, ring.Read(got.data()));
    EXPECT_TRUE(std::equal(got.begin(), got.begin() + 4000, sound.begin() + from)) << from;
  }
  ASSERT_EQ(PcmRing::kValues, ring.Read(got.data())) << "nothing new: all of it again";
  EXPECT_TRUE(std::equal(got.begin(), got.end(), sound.end() - PcmRing::kValues));
}

TEST_F(Toolkit, HiddenWindowMovesOnUnpaintedAndComesToTheFrontWithItsWholeCanvas) {
  host.canvas->FillSolid(0x563412);
  Widget& widget = Canvas(1, 4, 4);
  widget.SetPath(0, 0, 0, 10, 0, 10, 0, MOTION_ONCE);
  widget.RunProgram(0, 0);
  platform::ShowWindow(platform::WindowShow::kMinimise);
  const int presented = headless::Window().presented;
  DrawFrames(12);
  EXPECT_EQ(10, widget.x);
  EXPECT_EQ(presented, headless::Window().presented);
  host.BringToFront();
  EXPECT_FALSE(headless::Window().minimised);
  const std::vector<std::uint8_t> pixels = headless::WindowPixels();
  ASSERT_EQ(4u * 100 * 80, pixels.size());
  for (std::size_t i = 0; i < pixels.size(); i += 4)
    ASSERT_TRUE(pixels[i] == 0x12 && pixels[i + 1] == 0x34 && pixels[i + 2] == 0x56) << i / 4;
  DrawFrames(2);
  host.BringToFront();
  DrawFrames(1);
  EXPECT_EQ((platform::Rectangle{20, 10, 60, 40}), headless::Window().lastPresented)
      << "whatever the two threads have torn is mended";
  const int mended = headless::Window().presented;
  DrawFrames(1);
  EXPECT_EQ(mended, headless::Window().presented);
}

TEST_F(Toolkit, FrameOfTheBackgroundDragsTheWindow) {
  platform::MoveWindow({200, 100});
  const auto send = [](int id, int x, int y) {
    headless::MovePointer({x, y});
    const platform::Rectangle at = platform::WindowRectangle();
    platform::DispatchMessage({id, 0, (x - at.x) | (y - at.y) << 16});
  };
  send(platform::kMessageLeftDown, 205, 105);
  EXPECT_TRUE(headless::Window().captured);
  send(platform::kMessageMouseMove, 195, 125);
  EXPECT_EQ(190, platform::WindowRectangle().x);
  EXPECT_EQ(120, platform::WindowRectangle().y);
  send(platform::kMessageLeftUp, 195, 125);
  send(platform::kMessageLeftDown, 225, 140);
  EXPECT_FALSE(headless::Window().captured) << "the interface is no title bar";
}

}  // namespace
}  // namespace kwo
