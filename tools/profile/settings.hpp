// What a camera profile or the command line may say about the two lenses and the blend.  Everything may be left open.
#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>

namespace biseam::profile {

// One line that names the profile and what is wrong with it.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Size {
  int width = 0, height = 0;
  bool operator==(const Size&) const = default;
};

// Pixels of the picture as recorded, before its mounting is undone; an integer is the centre of a pixel.
struct LensSettings {
  std::optional<double> cx, cy;            // where the optical axis meets the picture
  std::optional<double> p;                 // pixels per radian, at the axis
  std::optional<std::array<double, 3>> k;  // a ray at the angle a falls p (a + k1 a^3 + k2 a^5 + k3 a^7) from the centre
  std::optional<double> fov;               // degrees across the image circle
  std::optional<int> mount;                // degrees the picture is turned clockwise: 0, 90 (sky at the right), 180, 270
  std::optional<double> yaw, pitch, roll;  // degrees: right, up, clockwise seen along the axis
  // Light that comes in at the angle a is recorded times gain (1 + v1 a^2 + v2 a^4), in code values.
  std::optional<std::array<double, 2>> vignette;  // v1, v2
  std::optional<std::array<double, 3>> gain;      // of red, green and blue
};

// Widths in panorama columns.
struct BlendSettings {
  std::optional<int> feather, trans_width, pyr_level;
  std::optional<bool> search;
  std::optional<int> findpath_width;
  std::optional<double> inv_scale;
};

struct CameraSettings {
  std::optional<int> width;        // of the panorama; the blend's columns are counted at this width
  std::optional<Size> picture;     // recorded picture of one lens for which the lens values hold
  std::optional<double> baseline;  // metres from lens 0 to lens 1, along their axis
  LensSettings lens[2];
  BlendSettings blend;
};

struct Limits {
  double low, high;
  constexpr bool hold(double value) const { return value >= low && value <= high; }  // false for NaN
};

inline constexpr Limits kCentreLimits{-100000, 100000};
inline constexpr Limits kScaleLimits{1, 16384};
inline constexpr Limits kCoefficientLimits{-10, 10};  // of k and vignette
inline constexpr Limits kGainLimits{0.25, 4};
inline constexpr Limits kBaselineLimits{0, 10};
inline constexpr Limits kFovLimits{120, 300};
inline constexpr Limits kTurnLimits{-45, 45};
inline constexpr Limits kWidthLimits{64, 16384};
inline constexpr Limits kColumnLimits{0, 4096};
inline constexpr Limits kLevelLimits{1, 16};
inline constexpr Limits kShrinkLimits{1, 64};
inline constexpr Limits kSideLimits{2, 32766};

// The engine's rows come in pairs that are split in the middle.
constexpr bool is_panorama_width(int width) { return kWidthLimits.hold(width) && width % 8 == 0; }
constexpr bool is_quarter_turn(int degrees) { return degrees >= 0 && degrees < 360 && degrees % 90 == 0; }

// Values that are set in over replace those of base.
void replace_settings(LensSettings& base, const LensSettings& over);
void replace_settings(BlendSettings& base, const BlendSettings& over);

// Lens values for the same camera's picture of another size.  Throws Error naming the profile when the picture has another
// shape.
LensSettings scale_lens(const LensSettings& lens, Size from, Size to, const std::string& profile);

// The columns of a blend for a panorama of another width; rounded to even, as bands hold whole chroma pairs.
BlendSettings scale_blend(const BlendSettings& blend, int from_width, int to_width);

}  // namespace biseam::profile
