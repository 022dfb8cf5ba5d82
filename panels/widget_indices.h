#pragma once

/// The widgets and groups of the program by their fixed numbers, in the order of the table.
namespace kwo {

enum WidgetIndex : int {
  WIDGET_TILE_MAIN = 0,  // and one for each other page
  WIDGET_PAGE_MAIN = 6,  // and one for each other page
  WIDGET_TOP_BOX = 12,
  WIDGET_PLAY = 13,
  WIDGET_STOP = 14,
  WIDGET_NEXT = 15,
  WIDGET_PREVIOUS = 16,
  WIDGET_DIGIT = 50,  // six of them
  WIDGET_MAIN_BOX = 56,
  WIDGET_DISPLAY_MODE = 57,
  WIDGET_VISUALISER_MODE = 58,
  WIDGET_VISUALISER = 59,
  WIDGET_SONG_TEXT = 60,
  WIDGET_ROW = 100,  // up to ten of them
  WIDGET_PLAYLIST_BOX = 110,
  WIDGET_SCROLL_BAR = 111,
  WIDGET_FUNCTION = 112,
  WIDGET_ADD = 113,
  WIDGET_REMOVE = 114,
  WIDGET_ITEM_UP = 115,
  WIDGET_ITEM_DOWN = 116,
  WIDGET_MIXER_BOX = 150,
  WIDGET_SUB_PAGE = 151,  // four of them
  WIDGET_VOLUME_LABEL = 160,
  WIDGET_VOLUME = 161,
  WIDGET_PAN_LABEL = 162,
  WIDGET_PAN = 163,
  WIDGET_SPEED_LABEL = 164,
  WIDGET_SPEED = 165,
  WIDGET_CURVE = 170,  // a pair
  WIDGET_EQ_SWITCH = 172,
  WIDGET_EQ_RESET = 173,
  WIDGET_PRESET_NAME = 174,
  WIDGET_PRESET_BACK = 175,
  WIDGET_PRESET_FORWARD = 176,
  WIDGET_CRYSTALIZER = 200,
  WIDGET_ENHANCER = 201,
  WIDGET_VOCAL_REDUCER = 202,
  WIDGET_WIDE_STEREO = 203,
  WIDGET_LIMITER = 204,
  WIDGET_DJ = 210,
  WIDGET_PLAY_MODE = 211,
  WIDGET_REPEAT = 212,
  WIDGET_SHUFFLE = 213,
  WIDGET_ON_TOP = 300,
  WIDGET_AUTO = 301,
  WIDGET_MINIMISE = 302,
  WIDGET_QUIT = 303,
};

enum GroupIndex : int {
  GROUP_INTERFACE = 0,
  GROUP_TRANSPORT = 1,
  GROUP_PAGES = 2,
  GROUP_MAIN_STRIP = 3,
  GROUP_DIGITS = 4,
  GROUP_PLAYLIST_BUTTONS = 5,
  GROUP_SUB_PAGES = 6,
};

/// What assistive programs see as controls of their own, though no widgets: beyond those' numbers.
enum ControlIndex : int {
  CONTROL_CURVE = 1000,  // a preset's values: the bands, then the master value
};

constexpr int kDigits = 6;
constexpr int kMaxRows = 10;

}  // namespace kwo
