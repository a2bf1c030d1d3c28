#pragma once

#include "accessfile/file/Page.h"

#include <cstddef>
#include <string>
#include <string_view>

// Texts of the file (UTF-16, or the compressed form) from and to UTF-8.
namespace accessfile {

/// Appends UTF-16LE bytes as UTF-8; lone surrogates become U+FFFD, an odd last byte is ignored.
void appendUtf16(ByteView bytes, std::string& out);

/// UTF-16LE of a text. Malformed UTF-8 is an error (TypeMismatch).
[[nodiscard]] Bytes toUtf16(std::string_view utf8);

/// Appends a cell as stored, compressed or plain.
void appendStoredText(ByteView stored, std::string& out);

/// Cell as stored. `compress` allows the compressed form. A text that would read back as another is refused.
[[nodiscard]] Bytes toStoredText(std::string_view utf8, bool compress);

/// Names without regard to case, as Access compares them (Latin letters).
[[nodiscard]] std::string foldName(std::string_view utf8);
[[nodiscard]] bool sameName(std::string_view left, std::string_view right);

} // namespace accessfile
