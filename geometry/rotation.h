#pragma once

#include "geometry/vector.h"

struct CyMatrix;
struct CyQuaternion;

/// Rotation about an axis, right-handed. A plain record: copy it freely, it owns nothing.
struct CyRotation {
  CyVector axis;       // any length; whoever needs a direction normalises a copy
  double angle = 0.0;  // degrees

  constexpr CyRotation() noexcept = default;
  constexpr CyRotation(const CyVector& axis_, double angle_) noexcept
      : axis(axis_), angle(angle_) {}
  constexpr CyRotation(double x, double y, double z, double angle_) noexcept
      : axis(x, y, z), angle(angle_) {}
  explicit CyRotation(const CyMatrix& matrix) noexcept { FromMatrix(matrix); }

  constexpr void Set(const CyVector& axis_, double angle_) noexcept {
    axis = axis_;
    angle = angle_;
  }
  constexpr void Set(double x, double y, double z, double angle_) noexcept {
    axis.Set(x, y, z);
    angle = angle_;
  }

  constexpr CyVector& Axis() noexcept { return axis; }
  constexpr const CyVector& Axis() const noexcept { return axis; }

  /// The angle in degrees.
  constexpr double Angle() const noexcept { return angle; }

  /// Takes a unit axis and an angle from 0 to 360 degrees from `q`, which need not be of unit
  /// length. Without a usable vector part the axis becomes (1, 0, 0) and the angle stands.
  void FromQuaternion(const CyQuaternion& q) noexcept;

  /// The same from the 3 x 3 part of `matrix`, which is taken as it is stored.
  void FromMatrix(const CyMatrix& matrix) noexcept;
};
