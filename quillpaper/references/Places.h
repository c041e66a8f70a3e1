#pragma once

#include <string_view>

namespace quillpaper {

// What a piece of an address between commas names, as far as a list of the
// places books are published in knows: a city ("New York", "Göttingen",
// "Upper Saddle River"), a region a city is in ("NY", "Texas", "The
// Netherlands", "USA", a postcode after it: "NJ 07458"), or nothing known.
enum class PlaceKind { Unknown, City, Region };

PlaceKind placeKind(std::string_view piece);

}  // namespace quillpaper
