#include "toolkit/motion.h"

#include <algorithm>
#include <cmath>

#include "platform/clock.h"

namespace kwo {
namespace {

constexpr float kPathType = 1.0f;
constexpr float kRampType = 2.0f;
constexpr int kWaitMilliseconds = 100;

// The words of a path.
enum PathWord {
  PATH_TYPE,
  PATH_START_X,
  PATH_START_Y,
  PATH_END_X,
  PATH_END_Y,
  PATH_STEPS,
  PATH_ACCELERATION,
  PATH_MODE,
  PATH_X,
  PATH_Y,
  PATH_SPEED,
};

// The words of a ramp.
enum RampWord {
  RAMP_TYPE,
  RAMP_START,
  RAMP_END,
  RAMP_RESTORE_STEP,
  RAMP_MODE,
  RAMP_VALUE,
  RAMP_STEP,
};

// fmin and fmax also turn the no-number of a path without steps into one of its ends.
float Between(float value, float a, float b) {
  return std::fmin(std::fmax(value, std::fmin(a, b)), std::fmax(a, b));
}

int Word(const MotionProgram& program, int word) {
  return static_cast<int>(program.words[word]);
}

// As entrances and exits do, and neither nudges nor pulses.
bool RunsOnce(const MotionProgram& program) {
  return IsPath(program) && Word(program, PATH_MODE) == MOTION_ONCE;
}

}  // namespace

void MotionOwner::SetPath(int program, int startX, int startY, int endX, int endY, int steps,
                          float acceleration, int mode) {
  if (program < 0 || program >= kPrograms) return;
  Shared<float>* words = programs[program].words;
  words[PATH_START_X] = words[PATH_X] = static_cast<float>(startX);
  words[PATH_START_Y] = words[PATH_Y] = static_cast<float>(startY);
  words[PATH_END_X] = static_cast<float>(endX);
  words[PATH_END_Y] = static_cast<float>(endY);
  words[PATH_STEPS] = static_cast<float>(steps);
  words[PATH_ACCELERATION] = acceleration;
  words[PATH_MODE] = static_cast<float>(mode);
  words[PATH_SPEED] = 1.0f;
  words[PATH_TYPE] = kPathType;
}

void MotionOwner::SetWays(const Ways& ways, int steps, float enterAcceleration,
                          float leaveAcceleration) {
  SetPath(kEnterProgram, ways.from.x, ways.from.y, ways.rest.x, ways.rest.y, steps,
          enterAcceleration, MOTION_ONCE);
  SetPath(kLeaveProgram, ways.rest.x, ways.rest.y, ways.to.x, ways.to.y, steps, leaveAcceleration,
          MOTION_ONCE);
}

void MotionOwner::SetNudge(int program, platform::Point rest) {
  constexpr int kNudge = 3;
  SetPath(program, rest.x, rest.y, rest.x + kNudge, rest.y + kNudge, kNudge, 0, MOTION_SNAP_BACK);
}

void MotionOwner::RunProgram(int slot, int program) {
  if (slot < 0 || slot >= kSlots || program < -1 || program >= kPrograms) return;
  // The program's words were written before; the redraw thread sees them once it sees the slot.
  slots[slot].Publish(program);
}

void MotionOwner::WaitSlot(int slot) {
  if (slot < 0 || slot >= kSlots) return;
  while (slots[slot].Acquire() != -1) platform::Sleep(kWaitMilliseconds);
}

MotionOwner::Way MotionOwner::Underway() const {
  const int program = slots[kMoveSlot].Acquire();
  const bool moves = program == kEnterProgram || program == kLeaveProgram;
  if (!moves || !RunsOnce(programs[program])) return Way::kNone;
  return program == kEnterProgram ? Way::kIn : Way::kOut;
}

platform::Point MotionOwner::EntranceEnd(platform::Point place) const {
  const MotionProgram& entrance = programs[kEnterProgram];
  if (!RunsOnce(entrance)) return place;
  return {Word(entrance, PATH_END_X), Word(entrance, PATH_END_Y)};
}

void WriteRamp(MotionProgram& program, int start, int end, float step, int mode) {
  Shared<float>* words = program.words;
  words[RAMP_START] = words[RAMP_VALUE] = static_cast<float>(start);
  words[RAMP_END] = static_cast<float>(end);
  words[RAMP_RESTORE_STEP] = words[RAMP_STEP] = step;
  words[RAMP_MODE] = static_cast<float>(mode);
  words[RAMP_TYPE] = kRampType;
}

bool IsPath(const MotionProgram& program) {
  return program.words[PATH_TYPE] == kPathType;
}

bool IsRamp(const MotionProgram& program) {
  return program.words[RAMP_TYPE] == kRampType;
}

PathStep StepPath(MotionProgram& program) {
  Shared<float>* words = program.words;
  const float startX = words[PATH_START_X], startY = words[PATH_START_Y];
  const float endX = words[PATH_END_X], endY = words[PATH_END_Y];
  const float steps = words[PATH_STEPS];
  const float speed = words[PATH_SPEED], acceleration = words[PATH_ACCELERATION];
  float x = Between(words[PATH_X] + (endX - startX) / steps * speed, startX, endX);
  float y = Between(words[PATH_Y] + (endY - startY) / steps * speed, startY, endY);
  float newSpeed = speed > 0 ? speed + acceleration : speed - acceleration;
  PathStep step{static_cast<int>(x), static_cast<int>(y), false};
  const bool atStart = x == startX && y == startY;
  const bool atEnd = x == endX && y == endY;
  const int mode = Word(program, PATH_MODE);
  if (atStart || atEnd) {
    if (mode == MOTION_TO_AND_FRO || mode == MOTION_OUT_AND_BACK)
      newSpeed = newSpeed > 0 ? -1.0f : 1.0f;
    step.ended = mode == MOTION_ONCE || (mode == MOTION_SNAP_BACK && atEnd) ||
                 (mode == MOTION_OUT_AND_BACK && atStart);
    if (step.ended && mode != MOTION_ONCE) {
      step.x = static_cast<int>(startX);
      step.y = static_cast<int>(startY);
    }
    if (step.ended || mode == MOTION_LOOP) {
      x = startX;
      y = startY;
      newSpeed = 1.0f;
    }
  }
  words[PATH_X] = x;
  words[PATH_Y] = y;
  words[PATH_SPEED] = newSpeed;
  return step;
}

RampStep StepRamp(MotionProgram& program) {
  const int start = Word(program, RAMP_START), end = Word(program, RAMP_END);
  const int restoreStep = Word(program, RAMP_RESTORE_STEP);
  int step = Word(program, RAMP_STEP);
  int value =
      std::clamp(Word(program, RAMP_VALUE) + step, std::min(start, end), std::max(start, end));
  int kept = value;
  RampStep result{value, false, false};
  if (value == start || value == end) {
    switch (Word(program, RAMP_MODE)) {
      case MOTION_ONCE:
        result.ended = true;
        kept = start;
        step = restoreStep;
        break;
      case MOTION_LOOP:
        result.brightness = kept = start;
        break;
      case MOTION_TO_AND_FRO:
        step = -step;
        break;
      case MOTION_SNAP_BACK:
        result.ended = value == end;
        break;
      case MOTION_OUT_AND_BACK:
        step = -step;
        result.ended = value == start;
        break;
      case MOTION_FADE_AND_HIDE:
        result.hide = true;
        break;
      default:
        break;
    }
    if (result.ended && Word(program, RAMP_MODE) != MOTION_ONCE) {
      result.brightness = kept = start;
      step = restoreStep;
    }
  }
  program.words[RAMP_VALUE] = static_cast<float>(kept);
  program.words[RAMP_STEP] = static_cast<float>(step);
  return result;
}

}  // namespace kwo
