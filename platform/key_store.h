// A small registry: values under keys whose segments are separated by backslashes. The store is one
// text file that the host names at its start; a person may edit it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

// Names the file; it need not exist. Without a file every key is missing.
void SetKeyStoreFile(const std::string& path);

// Sets a value for this process only. It takes precedence over the file for as long as the process
// runs.
void OverrideKeyValue(const std::string& key, const std::string& name,
                      std::optional<uint32_t> value);

// The 32-bit value `name` under `key` ("HKEY_LOCAL_MACHINE\\SOFTWARE\\..."); nothing if key or
// value is missing, is of another type, or the file can't be read. Each call reads the file.
std::optional<uint32_t> ReadKeyValue(const std::string& key, const std::string& name);

}  // namespace platform
