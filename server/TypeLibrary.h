#pragma once

#include <string>
#include <string_view>

namespace QuillFormatAPA::server {

// The type library: every public class with its members in dispatch order,
// each with its kind, parameters and result type, as JSON. It is read off the
// member tables that dispatch uses, so it cannot drift from what the objects
// answer.
const std::string& typeLibraryJson();

// The library's version ("0.1.0"), as the type library states it.
std::string_view version() noexcept;

// The file name of the type library installed beside the shared library.
inline constexpr const char* kTypeLibraryFile = "QuillFormatAPA.typelib.json";

}  // namespace QuillFormatAPA::server
