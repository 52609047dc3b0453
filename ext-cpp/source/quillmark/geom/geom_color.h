#ifndef QUILLMARK_GEOM_COLOR_H
#define QUILLMARK_GEOM_COLOR_H

#include <cstddef>
#include <type_traits>

namespace Geom {

/// An RGBA colour of four bytes, 0 to 255 per channel, in the order r, g, b, a.
struct Color {
  unsigned char r;
  unsigned char g;
  unsigned char b;
  unsigned char a;

  /// Black with alpha 0.
  constexpr Color() noexcept : r(0), g(0), b(0), a(0) {}
  /// The four channels as given.
  constexpr Color(unsigned char r_, unsigned char g_, unsigned char b_, unsigned char a_) noexcept
      : r(r_), g(g_), b(b_), a(a_) {}
  /// Copies the four bytes.
  Color(Color const&) noexcept = default;
  Color& operator=(Color const&) noexcept = default;

  /// A new colour, per channel c + trunc((o - c) * t) wrapped to 8 bits: t = 0 gives this
  /// colour, t = 1 other's exactly. The step is truncated toward zero, so the result leans
  /// toward this colour: 0 -> 255 at t = 0.5 gives 127, and 255 -> 0 gives 128. t is not
  /// clamped: outside [0, 1] channels wrap modulo 256; a step beyond the 32-bit range
  /// saturates rather than overflow, and a NaN t gives no step (this colour).
  Color transition_to(Color const& other, double t) const noexcept;
};

static_assert(sizeof(Color) == 4, "Color must be exactly four bytes");
static_assert(std::is_standard_layout<Color>::value && offsetof(Color, a) == 3,
              "Color must be laid out as r, g, b, a");
static_assert(std::is_trivially_copyable<Color>::value, "Color must copy as raw bytes");

}  // namespace Geom

#endif
