#pragma once

// The option variables that the import and reference options write and the file commands
// read, in the host's "Files" category.
namespace ThostFileCommands {
constexpr const char* kCategory = "Files";
constexpr const char* kImportNamespace = "fileImportNamespace";
constexpr const char* kImportGroup = "fileImportGroup";
constexpr const char* kReferenceNamespace = "fileReferenceNamespace";
constexpr const char* kReferenceLock = "fileReferenceLock";
} // namespace ThostFileCommands
