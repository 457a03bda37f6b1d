#pragma once

/// Factors between the two units of angles: the doubles nearest to pi/180 and 180/pi.
inline constexpr double DegreesToRadians = 0.017453292519943295;
inline constexpr double RadiansToDegrees = 57.29577951308232;
