#include <quillmark/geom/geom_color.h>

#include <cmath>
#include <cstdint>

namespace Geom {

namespace {

unsigned char channel_toward(unsigned char c, unsigned char o, double t) noexcept {
  double const f = (static_cast<int>(o) - static_cast<int>(c)) * t;
  // Converting a double outside the int32 range is undefined, so far steps saturate and a
  // NaN step is no step; within the range this is plain truncation toward zero.
  std::int32_t step = 0;
  if (f >= 2147483647.0) {
    step = INT32_MAX;
  } else if (f <= -2147483648.0) {
    step = INT32_MIN;
  } else if (!std::isnan(f)) {
    step = static_cast<std::int32_t>(f);
  }
  // Unsigned arithmetic wraps instead of overflowing; only the low 8 bits are kept.
  return static_cast<unsigned char>(
      (static_cast<std::uint32_t>(c) + static_cast<std::uint32_t>(step)) & 0xFFu);
}

}  // namespace

Color Color::transition_to(Color const& other, double t) const noexcept {
  return Color(channel_toward(r, other.r, t), channel_toward(g, other.g, t),
               channel_toward(b, other.b, t), channel_toward(a, other.a, t));
}

}  // namespace Geom
