#pragma once

#include "base/shared.h"
#include "platform/window.h"

namespace kwo {

/// What happens when a program reaches an end of its way.  Paths know the first five.
enum MotionMode : int {
  MOTION_ONCE = 0,
  MOTION_LOOP = 1,  ///< a ramp starts anew from its start
  MOTION_TO_AND_FRO = 2,
  MOTION_SNAP_BACK = 3,
  MOTION_OUT_AND_BACK = 4,
  MOTION_FADE_AND_HIDE = 5,
};

/// A movement in small steps, one a frame: sixteen words, of which eleven are used.
struct MotionProgram {
  Shared<float> words[16];
};

/// Programs and slots by convention.
constexpr int kNoProgram = -1;
constexpr int kEnterProgram = 0;
constexpr int kLeaveProgram = 1;
constexpr int kNudgeProgram = 2;
constexpr int kPulseProgram = 3;
constexpr int kMoveSlot = 0;
constexpr int kNudgeSlot = 1;
constexpr int kPulseSlot = 2;

/// Where something comes from when it enters, where it rests, and where it leaves to.
struct Ways {
  platform::Point from, rest, to;
};

/// The slots and programs of something that moves.
///
/// The main thread writes a program, then its number into a slot; the redraw thread steps the
/// programs in slots and frees a slot when its program ends.  A program that is overwritten while
/// it runs may make one step half old, half new.
class MotionOwner {
 public:
  static constexpr int kSlots = 4;
  static constexpr int kPrograms = 16;

  MotionOwner() = default;

  /// A straight way.  Each step goes (end - start) / `steps` times a speed that begins at 1 and
  /// grows by `acceleration`.
  void SetPath(int program, int startX, int startY, int endX, int endY, int steps,
               float acceleration, int mode);
  /// The entrance and the exit, each a straight way that runs once.
  void SetWays(const Ways& ways, int steps, float enterAcceleration, float leaveAcceleration);
  /// The nudge of a press: three pixels right and down, and back.
  void SetNudge(int program, platform::Point rest);
  /// Puts a program into a slot, which starts it; -1 stops what runs there.
  void RunProgram(int slot, int program);
  /// Sleeps 100 ms at a time until the slot is free.  Not on the redraw thread, which alone frees
  /// slots.
  void WaitSlot(int slot);

  enum class Way { kNone, kIn, kOut };
  /// The entrance or the exit that is under way.  Any thread.
  Way Underway() const;
  /// Where the entrance ends; `place` for one that has none.  Any thread.
  platform::Point EntranceEnd(platform::Point place) const;

  Shared<int> slots[kSlots] = {-1, -1, -1, -1};
  MotionProgram programs[kPrograms];
};

/// What one step of a path does to its owner.
struct PathStep {
  int x, y;
  bool ended;  ///< the slot is to be freed
};

/// Moves a path on by one step.  Redraw thread.
PathStep StepPath(MotionProgram& program);

/// What one step of a ramp does to its owner.
struct RampStep {
  int brightness;
  bool ended;  ///< the slot is to be freed
  bool hide;
};

/// Moves a ramp on by one step.  Redraw thread.
RampStep StepRamp(MotionProgram& program);

bool IsPath(const MotionProgram& program);
bool IsRamp(const MotionProgram& program);
void WriteRamp(MotionProgram& program, int start, int end, float step, int mode);

}  // namespace kwo
