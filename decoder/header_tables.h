#pragma once

namespace kwo {

constexpr int kReservedVersion = 3;

/// Header version field -> version index: 0 MPEG-1, 1 MPEG-2, 2 MPEG-2.5.
constexpr int kVersionMap[4] = {2, kReservedVersion, 1, 0};

/// In Hz for MPEG-1; shifted right by the version index for the others.
constexpr int kSampleRates[4] = {44100, 48000, 32000, 0};

/// Kilobits per second, ISO/IEC 11172-3 clause 2.4.2.3 and ISO/IEC 13818-3: Layers I, II, III of
/// MPEG-1, then of the lower sampling frequencies.
constexpr int kBitRates[6][16] = {
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
};

}  // namespace kwo
