#pragma once

#include <filesystem>
#include <string>

namespace QuillFormatAPA::server {

// The per-user registration record that tells hosts where the library is:
// $XDG_DATA_HOME/QuillFormatAPA/registration.json (or ~/.local/share/...).
std::filesystem::path registrationPath();

// The shared library this code runs in, as an absolute path.
std::filesystem::path libraryPath();

// Writes the record for this library: its path, its classes, its type library
// (which must sit beside the library). Registering again rewrites the record.
// Raises AutomationError when the record cannot be written.
void registerServer();

// Removes the record. Answers false, with `why` set, when this library is not
// the one registered (no record, or one naming another library, which stays).
bool unregisterServer(std::string& why);

}  // namespace QuillFormatAPA::server
