#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <vector>

namespace accessfile {

/// What the place where a data file lies means for sharing it, as sentences for the operator.
struct Location
{
    std::string refusal; ///< Why it cannot be written safely from here; empty when it can.
    std::vector<std::string> warnings;
};

/// Judges by the mounted file systems (the text of /proc/self/mountinfo) and by the settings of a file server on this
/// computer (smb.conf; files that it includes are not looked at). `file` is absolute and free of links.
[[nodiscard]] Location examineLocation(const std::filesystem::path& file, std::istream& mounts,
                                       std::istream& serverSettings);

/// The same by what this computer says.
[[nodiscard]] Location locationOf(const std::filesystem::path& file);

} // namespace accessfile
