#ifndef QUILLMARK_GEOM_TOLERANCES_H
#define QUILLMARK_GEOM_TOLERANCES_H

// The geometry library's vocabulary of "zero", "same direction" and "opposite direction".
// The side a value equal to the constant falls on differs between operations (most tests
// are strict, a few are not) and is part of each operation's contract, stated with it, so
// change none of them lightly.
namespace Geom {

/// A squared length at or below this counts as zero: such a vector is not normalised or
/// re-lengthened (a quaternion is zeroed). cotan and the angular ray test of BoundingBox3
/// treat only values below it as zero. Squared, so the test costs no square root (1e-12 is
/// a length of 1e-6).
inline constexpr double SQUARED_LENGTH_EPSILON = 1e-12;

/// A length, homogeneous weight, determinant or denominator this small (in absolute value)
/// is unusable: operations take their documented fallback instead of dividing. Whether a
/// value equal to it is still usable differs by operation (see each). Also the tolerance
/// per unit component of parallel_to.
inline constexpr double LENGTH_EPSILON = 1e-6;

/// A cosine beyond this means "same direction", one beyond its negation "opposite"; whether
/// a cosine equal to either counts differs by operation (see each). A unit component whose
/// absolute value reaches it means "nearly along that axis". About 0.058 degrees: beyond
/// that the cross product of two directions is too short to be an axis.
inline constexpr double PARALLEL_COSINE = 0.9999995;

/// Pi to double precision; <cmath> offers no portable constant in C++17.
inline constexpr double PI = 3.14159265358979323846;

}  // namespace Geom

#endif
