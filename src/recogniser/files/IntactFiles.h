#pragma once

#include "recognition/ModelRequest.h"

#include <filesystem>
#include <initializer_list>
#include <map>
#include <string>

namespace dorix::recogniser {

/// Reads every file of the map, path within the folder to its SHA-256 in hexadecimal digits, and throws
/// MessageError when one is missing or another than it should be.
void demandIntact(const std::filesystem::path& folder, const std::map<std::string, std::string>& sha256);

/// That the model has a file for each of the roles, and that those with a checksum are intact. A library that
/// is given anything else may end the process, or misunderstand every word. Throws MessageError.
void demandFiles(const ModelRequest& model, std::initializer_list<const char*> roles);

}  // namespace dorix::recogniser
