#pragma once

namespace kwo {

// Constants of the inverse transform, ISO/IEC 11172-3 clause 2.4.3.4.10, with the windows folded
// in.  They are written out because the kernels may call no library; a test holds them against the
// formulas.

/// 0.5 / cos((2i + 1) pi / 36)
constexpr float kTableA[9] = {0.501909912f, 0.517638087f, 0.551688969f, 0.610387266f, 0.707106769f,
                              0.871723413f, 1.18310082f,  1.93185163f,  5.73685646f};

/// 0.5 sin((2i + 1) pi / 72 - pi / 4) / cos((2i + 1) pi / 72)
constexpr float kTableB[18] = {
    -0.338116914f, -0.307007194f,  -0.275172502f,  -0.242078438f, -0.207106784f, -0.169505149f,
    -0.128315046f, -0.0822623298f, -0.0295813978f, 0.0322824307f, 0.10720636f,   0.201414272f,
    0.32561636f,   0.5f,           0.767774701f,   1.24122286f,   2.33195114f,   7.74415064f};

/// 0.5 / cos((2i + 1) pi / 12)
constexpr float kTableC[3] = {0.517638087f, 0.707106769f, 1.93185163f};

/// 0.5 sin((2i + 1) pi / 24 - pi / 4) / cos((2i + 1) pi / 24)
constexpr float kTableD[6] = {-0.307007194f, -0.207106784f, -0.0822623298f,
                              0.10720636f,   0.5f,          2.33195114f};

/// cot((2i + 1) pi / 72)
constexpr float kTableE[9] = {22.9037647f, 7.59575415f, 4.51070833f, 3.17159486f, 2.41421366f,
                              1.92098212f, 1.56968558f, 1.3032254f,  1.09130847f};

/// 1 / sin((2i + 1) pi / 72)
constexpr float kTableF[6] = {22.9255848f, 7.6612978f,  4.62022638f,
                              3.32550955f, 2.61312604f, 2.16568065f};

/// sin(k pi / 24) / sin(k pi / 72), k = 13 + 2i
constexpr float kTableG[3] = {1.84523654f, 1.51763809f, 1.17431152f};

/// sin(k pi / 24) / cos(k pi / 72), k = 19 + 2i
constexpr float kTableH[3] = {0.901080906f, 0.628626287f, 0.242929995f};

/// cot((2i + 1) pi / 24)
constexpr float kTableK[3] = {7.59575415f, 2.41421366f, 1.3032254f};

/// cos(i pi / 18)
constexpr double kCosines9[9] = {1.0,
                                 0.98480775301220802,
                                 0.93969262078590843,
                                 0.86602540378443871,
                                 0.76604444311897801,
                                 0.64278760968653936,
                                 0.50000000000000011,
                                 0.34202014332566882,
                                 0.17364817766693041};

/// The square root of 0.5.
constexpr float kMsFactor = 0.707106769f;

}  // namespace kwo
