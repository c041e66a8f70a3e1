#pragma once

#include "host/Object.h"

namespace QuillFormatAPA::runtime {

// The runtime's global objects as an error dump reports them: what this
// platform knows of the library (App), the error being handled (Err), the
// display (Screen) and the default printer (Printer).
ObjectRef appObject();
ObjectRef errObject();
ObjectRef screenObject();
ObjectRef printerObject();

}  // namespace QuillFormatAPA::runtime
