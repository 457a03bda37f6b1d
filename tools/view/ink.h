#pragma once

#include "tools/view/picture.h"

namespace kelview {

/// The colours of an ink, as #rrggbb. Those of values can be told apart by people who see fewer
/// colours (after Okabe and Ito); x, y and z are red, green and blue as everywhere.
struct InkColours {
  const char* name;
  const char* light;  // on white
  const char* dark;   // on black
};

// clang-format off
inline constexpr InkColours Inks[] = {
    // In the order of Ink.
    {"point",    "#1a1a1a", "#f5f5f5"},
    {"vector",   "#d98c00", "#ffb733"},
    {"rotation", "#b8508d", "#e89ac7"},
    {"scale",    "#3f9fd8", "#7cc8f5"},
    {"x",        "#d1341b", "#ff6b57"},
    {"y",        "#00875f", "#2cc79b"},
    {"z",        "#0062b0", "#5aaef5"},
    {"grid",     "#d5d9df", "#3b414a"},
    {"text",     "#5b6270", "#b4bac4"},
};
// clang-format on
static_assert(sizeof Inks / sizeof *Inks == static_cast<unsigned>(Ink::Text) + 1);

inline const InkColours& Colours(Ink ink) { return Inks[static_cast<unsigned>(ink)]; }

}  // namespace kelview
