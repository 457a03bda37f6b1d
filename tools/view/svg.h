#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/view/labels.h"

namespace kelview::svg {

struct Attribute {
  std::string_view name;
  std::string value;  // written as it is
};

/// One element on a line of its own; `content` is markup.
std::string Element(std::string_view name, const std::vector<Attribute>& attributes,
                    std::string_view content = {});

/// A text element that begins at `spot`; `text` is plain.
std::string TextAt(const Spot& spot, std::vector<Attribute> style, std::string_view text);

/// A coordinate, to a hundredth of a pixel.
std::string Number(double number);

/// The value of a `points` attribute.
std::string Points(const std::vector<Spot>& spots);

std::size_t CharacterCount(std::string_view text);

}  // namespace kelview::svg
