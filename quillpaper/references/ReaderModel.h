#pragma once

#include <string>

#include "reader/ReferenceReader.h"

namespace quillpaper {

// The learned reader's model, loaded once: from the file
// QUILLFORMATAPA_READER_MODEL names, else the one installed with quillpaper,
// else the one in the source tree it was built from. Null when none can be
// used; `problem` then says why (the APA rules still read APA entries).
const quillreader::Model* readerModel(std::string& problem);

// The confidence under which a reading is not trusted and the entry is kept
// as typed. Calibrated on the held-out styles and works, among the readings
// that pass every other check: under 50 their title is right in 64% of cases,
// from 50 up in 86-99% (reader/model/README.md).
constexpr double kReaderThreshold = 50;

}  // namespace quillpaper
