#include <gtest/gtest.h>

#include <algorithm>

#include "platform/clock.h"
#include "platform/headless/headless.h"
#include "tests/allocations.h"
#include "tests/support.h"
#include "toolkit/skin_host.h"

namespace kwo {
namespace {

void Ignore(SkinHost&, std::uint32_t, int, int) {}

// A host whose window of 100 by 80 has an interface of 60 by 40 at (20, 10), without any skin.
class Toolkit : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(1, host.CreateMainWindow("none", Ignore, 0, 0, 100, 80, 20));
    host.SetSkinFont("any", 12, 0xFFFFFF);
    host.colorKey = host.defaultColorKey = 0x090009;
    host.groups[0].PlaceGroup(nullptr, 20, 10, 0, 60, 40, 0, 0);
    host.groups[0].visible = 1;
    platform::ShowWindow(platform::WindowShow::kShow);
  }

  Widget& Canvas(int index, int x, int y, int width, int height, std::uint32_t color,
                 int group = 0) {
    EXPECT_EQ(1, host.CreateCanvasWidget(index, color, width, height, IMAGE_WIDGET, group));
    Widget& widget = *host.GetWidget(index);
    widget.image->key = kNoKey;
    widget.SetPlace(x, y);
    widget.visible = 1;
    return widget;
  }

  // A slider whose cells are filled with their number.
  Widget& Slider(int kind, int width, int height, int cell) {
    EXPECT_EQ(1, host.CreateCanvasWidget(1, 0, width, height, kind, 0));
    Widget& slider = *host.GetWidget(1);
    const bool upright = kind == VERTICAL_SLIDER;
    slider.cap->CreateBlank(upright ? width : 7 * cell, upright ? 7 * cell : height, 0);
    for (int i = 0; i < 7; ++i) {
      const int fromTop = upright ? (6 - i) * cell : 0;
      slider.cap->FillRectangle(upright ? 0 : i * cell, fromTop, upright ? width : cell,
                                upright ? cell : height, static_cast<std::uint32_t>(i + 1));
    }
    slider.kind = kind;
    return slider;
  }

  // The number of the cell along a slider's middle, from the left or from the bottom.
  static int CellAt(const Widget& slider, int along) {
    const SkinBitmap& image = *slider.image;
    return slider.kind == VERTICAL_SLIDER ? image.bits[along * image.stride + 2] - 1
                                          : image.bits[3 * along + 2] - 1;
  }

  // Red, green, blue of the canvas at a place of the window.
  std::uint32_t Pixel(int x, int y) {
    const std::uint8_t* p = host.canvas->bits + (79 - y) * host.canvas->stride + 3 * x;
    return static_cast<std::uint32_t>(p[2] << 16 | p[1] << 8 | p[0]);
  }

  SkinHost host;
};

TEST_F(Toolkit, TableGivesNullOutsideAndReplacesWithin) {
  EXPECT_EQ(nullptr, host.GetWidget(-1));
  EXPECT_EQ(nullptr, host.GetWidget(512));
  EXPECT_EQ(0, host.CreateCanvasWidget(512, 0, 1, 1, 0, 0));
  EXPECT_EQ(0, host.CreateCanvasWidget(5, 0, 1, 1, 0, 32));
  Widget& first = Canvas(511, 0, 0, 4, 4, 0);
  first.SetRamp(3, 1, 2, 1, 0);
  Canvas(511, 0, 0, 4, 4, 0);
  EXPECT_FALSE(IsRamp(host.GetWidget(511)->programs[3]));
  EXPECT_EQ(0, host.CreateImageWidget(7, "missing.bmp", 0, 0, IMAGE_WIDGET, 0));
  EXPECT_NE(nullptr, host.GetWidget(7));
  host.GetWidget(7)->visible = 1;
  host.RedrawFrame();
  EXPECT_EQ(nullptr, host.HitTest(25, 15));
}

TEST_F(Toolkit, HigherLayerThenGroupThenLayerThenIndexIsHit) {
  for (int group : {1, 2, 3}) {
    host.groups[group].PlaceGroup(&host.groups[0], 0, 0, group == 3 ? 1 : 2, 60, 40, 0, 0);
    host.groups[group].visible = 1;
  }
  Canvas(400, 0, 0, 20, 20, 0, 3);
  EXPECT_EQ(host.GetWidget(400), host.HitTest(25, 15));
  Canvas(300, 0, 0, 20, 20, 0, 1);
  EXPECT_EQ(host.GetWidget(300), host.HitTest(25, 15));
  Canvas(10, 0, 0, 20, 20, 0, 2);
  EXPECT_EQ(host.GetWidget(10), host.HitTest(25, 15));
  Canvas(9, 0, 0, 20, 20, 0, 2).layer = 1;
  EXPECT_EQ(host.GetWidget(9), host.HitTest(25, 15));
  Canvas(11, 0, 0, 20, 20, 0, 2).layer = 1;
  EXPECT_EQ(host.GetWidget(11), host.HitTest(25, 15));
  EXPECT_EQ(nullptr, host.HitTest(20, 15)) << "the first column is not the widget's";
  EXPECT_EQ(nullptr, host.HitTest(40, 15));
  host.groups[2].visible = 0;
  EXPECT_EQ(host.GetWidget(300), host.HitTest(25, 15));
}

TEST_F(Toolkit, GroupsAreCutByTheRootAlone) {
  WidgetGroup& middle = host.groups[3];
  WidgetGroup& inner = host.groups[4];
  middle.PlaceGroup(&host.groups[0], 5, 5, 3, 10, 10, 0, 0);
  inner.PlaceGroup(&middle, 8, 8, 3, 100, 10, 0, 0);
  EXPECT_EQ(33, inner.absX);
  EXPECT_EQ(47, inner.clipWidth) << "to the root's edge, beyond its parent's";
  inner.PlaceGroup(&middle, -15, 0, 3, 30, 10, 0, 0);
  EXPECT_EQ(20, inner.absX);
  EXPECT_EQ(10, inner.rawX);
  EXPECT_EQ(20, inner.clipWidth);
  inner.PlaceGroup(&middle, 70, 0, 3, 30, 10, 0, 0);
  EXPECT_EQ(0, inner.clipWidth);
}

TEST_F(Toolkit, VerticalSliderPaintsCellsAndGivesItsPosition) {
  Widget& slider = Slider(VERTICAL_SLIDER, 8, 100, 10);
  EXPECT_FLOAT_EQ(0.5f, slider.ApplyValue(0, 0.5f));
  for (int row : {45, 54}) EXPECT_EQ(1, CellAt(slider, row));
  for (int row : {10, 44, 55, 89}) EXPECT_EQ(4, CellAt(slider, row));
  EXPECT_EQ(3, CellAt(slider, 0));
  EXPECT_EQ(5, CellAt(slider, 99));
  slider.ApplyValue(2.0f, -1.0f);
  EXPECT_EQ(2, CellAt(slider, 9));
  EXPECT_FLOAT_EQ(0.5f, slider.value);
  slider.ApplyValue(1.0f, -1.0f);
  EXPECT_EQ(6, CellAt(slider, 90));
  slider.ApplyValue(-1.0f, 0.0f);
  EXPECT_EQ(6, CellAt(slider, 90)) << "the caps stay as they were";
  EXPECT_EQ(1, CellAt(slider, 85)) << "0 stands at the top";
  EXPECT_FLOAT_EQ(1.0f, slider.ApplyValue(3.0f, 1.5f));
  EXPECT_EQ(0, CellAt(slider, 12));
}

TEST_F(Toolkit, HorizontalSliderRunsFromTheLeft) {
  Widget& slider = Slider(HORIZONTAL_SLIDER, 103, 8, 10);
  EXPECT_FLOAT_EQ(0.0f, slider.ApplyValue(1.0f, 0.0f));
  EXPECT_EQ(2, CellAt(slider, 0));
  EXPECT_EQ(1, CellAt(slider, 10));
  EXPECT_EQ(4, CellAt(slider, 92)) << "the track's last piece ends at the cap";
  EXPECT_EQ(5, CellAt(slider, 93));
  EXPECT_FLOAT_EQ(1.0f, slider.ApplyValue(2.0f, 1.0f));
  EXPECT_EQ(6, CellAt(slider, 102));
  EXPECT_EQ(1, CellAt(slider, 92));
  EXPECT_EQ(0.0f, Slider(HORIZONTAL_SLIDER, 20, 8, 10).ApplyValue(0, 0.5f)) << "too short for any";
}

TEST_F(Toolkit, CheckBoxFlipsAndReappliesItsState) {
  ASSERT_EQ(1, host.CreateCanvasWidget(1, 0, 20, 12, CHECK_WIDGET, 0));
  Widget& box = *host.GetWidget(1);
  box.SetFrameCount(0, 2);
  EXPECT_EQ(1.0f, box.ApplyValue(2.0f, 1.0f));
  EXPECT_EQ(1, box.frame);
  EXPECT_EQ(2, box.ProgramInSlot(1));
  EXPECT_EQ(1.0f, box.ApplyValue(-1.0f, 0.0f));
  EXPECT_EQ(0.0f, box.ApplyValue(2.0f, 0.0f));
  EXPECT_EQ(0.0f, box.ApplyValue(5.0f, 0.0f));
  EXPECT_EQ(0, box.frame);
}

TEST_F(Toolkit, PathGrowsByItsAccelerationAndFreesItsSlot) {
  Widget& widget = Canvas(1, 0, 0, 4, 4, 0);
  widget.SetPath(0, 0, 0, 100, -50, 100, 4.0f, MOTION_ONCE);
  widget.RunProgram(0, 0);
  const int expected[] = {1, 6, 15, 28, 45, 66, 91, 100};
  for (int x : expected) {
    host.RedrawFrame();
    EXPECT_EQ(x, widget.x);
    EXPECT_EQ(-x / 2, widget.y) << "towards 0";
  }
  EXPECT_EQ(-1, widget.ProgramInSlot(0));
  widget.RunProgram(0, 0);
  host.RedrawFrame();
  EXPECT_EQ(1, widget.x) << "rewound: it begins at its start again";
}

struct ModeCase {
  int mode;
  std::vector<int> places;
  bool ends;
  float acceleration = 0;
};

TEST_F(Toolkit, EveryPathModeActsAtItsEnds) {
  const ModeCase kCases[] = {
      {MOTION_ONCE, {1, 2, 3, 3}, true},
      {MOTION_LOOP, {1, 2, 3, 1, 2}, false},
      {MOTION_TO_AND_FRO, {1, 2, 3, 2, 1, 0, 1}, false},
      {MOTION_SNAP_BACK, {1, 2, 0, 0}, true},
      {MOTION_OUT_AND_BACK, {1, 2, 3, 2, 1, 0, 0}, true},
      {MOTION_TO_AND_FRO, {1, 3, 2, 0, 1, 3, 2}, false, 1.0f},
      {MOTION_OUT_AND_BACK, {1, 3, 2, 0, 0}, true, 1.0f},
      {MOTION_ONCE, {1, 3, 3, 3}, true, 1.0f},
  };
  for (const ModeCase& c : kCases) {
    Widget& widget = Canvas(1, 0, 0, 4, 4, 0);
    widget.SetPath(2, 0, 0, 3, 0, 3, c.acceleration, c.mode);
    widget.RunProgram(1, 2);
    for (int place : c.places) {
      host.RedrawFrame();
      EXPECT_EQ(place, widget.x) << c.mode;
    }
    EXPECT_EQ(c.ends ? -1 : 2, widget.ProgramInSlot(1)) << c.mode;
  }
  Widget& still = Canvas(1, 7, 7, 4, 4, 0);
  still.SetPath(0, 7, 7, 7, 7, 0, 1.0f, MOTION_SNAP_BACK);
  still.RunProgram(0, 0);
  host.RedrawFrame();
  EXPECT_EQ(-1, still.ProgramInSlot(0));
  EXPECT_EQ(7, still.x);
}

TEST_F(Toolkit, EveryRampModeActsAtItsEnds) {
  const ModeCase kCases[] = {
      {MOTION_ONCE, {10, 20, 30, 30}, true},
      {MOTION_LOOP, {10, 20, 0, 10}, false},
      {MOTION_TO_AND_FRO, {10, 20, 30, 20, 10, 0, 10}, false},
      {MOTION_SNAP_BACK, {10, 20, 0, 0}, true},
      {MOTION_OUT_AND_BACK, {10, 20, 30, 20, 10, 0, 0}, true},
      {MOTION_FADE_AND_HIDE, {10, 20, 30, 30, 30}, false},
  };
  for (const ModeCase& c : kCases) {
    Widget& widget = Canvas(1, 0, 0, 4, 4, 0);
    widget.SetRamp(2, 0, 30, 10.0f, c.mode);
    widget.RunProgram(1, 2);
    for (int brightness : c.places) {
      host.RedrawFrame();
      EXPECT_EQ(brightness, widget.brightness) << c.mode;
    }
    EXPECT_EQ(c.ends ? -1 : 2, widget.ProgramInSlot(1)) << c.mode;
    EXPECT_EQ(c.mode != MOTION_FADE_AND_HIDE, widget.visible != 0);
  }
}

TEST_F(Toolkit, FrameStripsShowTheirFramesFromTheTop) {
  Widget& strip = Canvas(1, 0, 0, 10, 40, 0);
  strip.image->FillRectangle(0, 10, 10, 10, 0x0000FF);
  strip.SetFrameCount(0, 4);
  EXPECT_EQ(10, strip.height);
  strip.SetFrame(1);
  strip.SetFrame(4);
  host.RedrawFrame();
  EXPECT_EQ(0xFF0000u, Pixel(25, 15));
  strip.SetFrame(0);
  host.RedrawFrame();
  EXPECT_EQ(0u, Pixel(25, 15));
}

TEST_F(Toolkit, TilesRepeatDriftAndCrossFade) {
  Canvas(0, 0, 0, 60, 40, 0x646464);
  Canvas(1, 0, 0, 10, 10, 0x323232);
  EXPECT_EQ(-1, host.ShowTile(0, 0));
  for (int i = 0; i < 14; ++i) host.RedrawFrame();
  EXPECT_EQ(0x646464u, Pixel(79, 49));
  EXPECT_EQ(0, host.GetWidget(0)->x);
  EXPECT_EQ(0, host.ShowTile(1, 0));
  host.RedrawFrame();
  EXPECT_EQ(0x505050u, Pixel(79, 49)) << "the new one is still dark, the old one added";
  for (int i = 0; i < 13; ++i) host.RedrawFrame();
  EXPECT_EQ(0x323232u, Pixel(79, 49));
  EXPECT_EQ(0, host.GetWidget(0)->visible);
  EXPECT_LT(host.GetWidget(1)->x, 0);
  host.ShowTile(1, 1);
  for (int brightness : {-76, -72}) {
    host.RedrawFrame();
    EXPECT_EQ(brightness, host.GetWidget(1)->brightness) << "it pulses";
  }
  for (int i = 0; i < 19; ++i) host.RedrawFrame();
  EXPECT_EQ(-4, host.GetWidget(1)->brightness);
  EXPECT_EQ(-1, host.ShowTile(-1, 0));
  EXPECT_EQ(0, host.GetWidget(1)->visible);
  host.CreateImageWidget(2, "missing.bmp", 0, 0, IMAGE_WIDGET, 0);
  host.ShowTile(2, 0);
  host.RedrawFrame();
  Canvas(3, kUnplaced, kUnplaced, 1, 1, 0x646464);
  host.currentTile = 3;
  host.RedrawFrame();
  EXPECT_EQ(0x646464u, Pixel(79, 49)) << "a tile of one pixel, drawn before its way has begun";
}

// Composes all widgets pixel by pixel: what the frame must be.
std::vector<std::uint32_t> ComposeSlowly(SkinHost& host) {
  std::vector<std::uint32_t> frame(100 * 80, 0);
  for (int y = 10; y < 50; ++y) {
    for (int x = 20; x < 80; ++x) {
      int below[3] = {0, 0, 0};
      for (int layer = 0; layer < 4; ++layer) {
        for (int index = 0; index < 512; ++index) {
          const Widget* w = host.GetWidget(index);
          if (!w || !w->visible || w->layer != layer) continue;
          const int px = x - 20 - w->x + w->offsetX, py = y - 10 - w->y + w->offsetY;
          if (px < 0 || py < 0 || px >= w->image->width || py >= w->image->height) continue;
          const std::uint8_t* p =
              w->image->bits + (w->image->height - 1 - py) * w->image->stride + 3 * px;
          if (static_cast<std::uint32_t>(p[2] | p[1] << 8 | p[0] << 16) == w->image->key) continue;
          for (int i = 0; i < 3; ++i) {
            const int s = std::clamp(p[i] + w->brightness, 0, 255);
            const int modes[] = {s, std::min(255, below[i] + s), std::max(0, below[i] - s),
                                 (below[i] + s) / 2};
            below[i] = modes[w->blendMode];
          }
        }
      }
      frame[static_cast<std::size_t>(100 * y + x)] =
          static_cast<std::uint32_t>(below[2] << 16 | below[1] << 8 | below[0]);
    }
  }
  return frame;
}

TEST_F(Toolkit, FrameEqualsTheSlowComposition) {
  unsigned random = 7;
  const auto next = [&random](unsigned range) {
    random = random * 1664525u + 1013904223u;
    return static_cast<int>((random >> 8) % range);
  };
  for (int round = 0; round < 60; ++round) {
    host.RemoveAllWidgets();
    host.canvas->FillSolid(0);
    for (int i = 0; i < 12; ++i) {
      Widget& w = Canvas(next(512), next(90) - 20, next(70) - 20, 1 + next(50), 1 + next(40), 0);
      for (int j = 0; j < w.image->stride * w.image->height; ++j)
        w.image->bits[j] = static_cast<std::uint8_t>(next(2) ? next(256) : 9);
      w.image->key = next(2) ? 0x090909u : kNoKey;
      w.brightness = next(2) ? next(700) - 350 : 0;
      w.blendMode = next(4);
      w.layer = next(4);
      w.offsetX = next(5);
      w.offsetY = next(5);
    }
    host.currentTile = 511;
    host.RemoveWidget(511);
    host.RedrawFrame();
    const std::vector<std::uint32_t> expected = ComposeSlowly(host);
    for (int y = 0; y < 80; ++y)
      for (int x = 0; x < 100; ++x)
        ASSERT_EQ(expected[static_cast<std::size_t>(100 * y + x)], Pixel(x, y))
            << round << ": " << x << "," << y;
  }
}

TEST_F(Toolkit, FrameAllocatesNothing) {
  Canvas(1, 0, 0, 30, 30, 0x112233).blendMode = BLEND_ADD;
  Canvas(2, 0, 0, 30, 30, 0x112233).image->key = 0x112233;
  host.ShowTile(1, 1);
  const long before = test::Allocations();
  for (int i = 0; i < 50; ++i) host.RedrawFrame();
  EXPECT_EQ(before, test::Allocations());
}

TEST_F(Toolkit, PausedThreadLeavesTheTableAloneAndGoesOnAfterwards) {
  host.PauseRedraw();
  host.PauseRedraw();
  Widget& widget = Canvas(1, 0, 0, 4, 4, 0);
  widget.SetPath(0, 0, 0, 1000, 0, 1000, 0, MOTION_ONCE);
  widget.RunProgram(0, 0);
  host.StartRedraw();
  platform::Sleep(500);
  EXPECT_GT(widget.x, 5);
  host.PauseRedraw();
  const int x = widget.x;
  platform::Sleep(500);
  EXPECT_EQ(x, widget.x);
  host.PauseRedraw();
  platform::Sleep(500);
  EXPECT_GT(widget.x, x);
  host.StopRedraw();
  EXPECT_EQ(0, host.threadAlive);
}

TEST(PcmRing, GivesWhatWasWrittenRoundItsEndAndThenTheWhole) {
  PcmRing ring;
  const std::vector<std::int16_t> sound = test::Noise(5 * 4608);
  std::vector<std::int16_t> got(PcmRing::kValues);
  for (int from = 0; from + 4000 <= 5 * 4608; from += 4000) {
    ring.Write(sound.data() + from, 4000);
    ASSERT_EQ(4000, ring.Read(got.data()));
    EXPECT_TRUE(std::equal(got.begin(), got.begin() + 4000, sound.begin() + from)) << from;
  }
  ASSERT_EQ(PcmRing::kValues, ring.Read(got.data())) << "nothing new: all of it again";
  EXPECT_TRUE(std::equal(got.begin(), got.end(), sound.begin() + 20000 - PcmRing::kValues));
}

TEST_F(Toolkit, HiddenWindowMovesOnUnpainted) {
  Widget& widget = Canvas(1, 0, 0, 4, 4, 0);
  widget.SetPath(0, 0, 0, 10, 0, 10, 0, MOTION_ONCE);
  widget.RunProgram(0, 0);
  platform::ShowWindow(platform::WindowShow::kMinimise);
  const int presented = headless::Window().presented;
  for (int i = 0; i < 12; ++i) host.RedrawFrame();
  EXPECT_EQ(10, widget.x);
  EXPECT_EQ(-1, widget.ProgramInSlot(0));
  EXPECT_EQ(presented, headless::Window().presented);
}

TEST_F(Toolkit, WindowThatComesToTheFrontShowsItsWholeCanvasAtOnce) {
  host.MoveHostWindow(0, 0, 100, 80);
  host.canvas->FillSolid(0x563412);
  host.BringToFront();
  const std::vector<std::uint8_t> pixels = headless::WindowPixels();
  for (const std::size_t pixel : {std::size_t{0}, pixels.size() / 2, pixels.size() - 4})
    EXPECT_TRUE(pixels[pixel] == 0x12 && pixels[pixel + 1] == 0x34 && pixels[pixel + 2] == 0x56);
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
