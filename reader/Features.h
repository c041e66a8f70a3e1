#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "reader/ReferenceReader.h"

namespace quillreader {

// The features of every token of an entry, each as a bucket in [0, buckets):
// the token's word, shape, affixes, digits and punctuation; the lexicons it
// is in (months, publishers' words, journals' words, the labels "vol.",
// "pp.", "ed."); where it stands (position, the entry's segment, inside
// quotes, parentheses or brackets); and its neighbours' words and shapes.
std::vector<std::vector<uint32_t>> tokenFeatures(std::string_view entry, const std::vector<Token>& tokens,
                                                 size_t buckets);

}  // namespace quillreader
