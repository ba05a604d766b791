#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

#include <tessel/data/types.h>

/// Whole files as bytes, under wide paths, on every platform.
namespace Tessel::Files {

/// @throws InvalidEncoding when the text is no Unicode.
std::filesystem::path toPath(const WString& path);

/// All bytes of a file. @throws FileNotFound when it cannot be opened or read, a directory included.
std::string readBytes(const WString& path);

/// Puts the bytes of a file into a stream; may throw.
using Producer = std::function<void(std::ostream&)>;

/// Replaces a file by what `produce` writes, or makes it. The bytes go to a temporary file beside the target,
/// which takes the target's place when they are complete: a reader sees the old file or the new one, and a
/// failure leaves the old one as it was. Symbolic links are followed and the permissions of a replaced file
/// stay. Targets that are no ordinary files, such as devices and pipes, are written directly.
/// @throws UnableToWriteFile, and what `produce` throws.
void write(const WString& path, const Producer& produce);
/// The same for bytes that are there.
void writeBytes(const WString& path, std::string_view bytes);

}  // namespace Tessel::Files
