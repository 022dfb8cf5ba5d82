#pragma once

namespace kwo::platform {

/// The environment's words by which the sound servers' libraries are told what the desktop's volume
/// control is to show.
constexpr char kPulseName[] = "PULSE_PROP_OVERRIDE", kPipeWireName[] = "PIPEWIRE_PROPS";

}  // namespace kwo::platform
