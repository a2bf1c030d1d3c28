#pragma once

#include "accessfile/file/Page.h"

// Page 0: generation, password, page encoding, sort order, and the masks that hang on them.
namespace accessfile {

/// XORs `bytes` with the RC4 stream of a four-byte key.
void applyRc4(std::uint32_t key, std::span<std::uint8_t> bytes);

/// The header's masked part is XORed with a fixed stream; the same call masks and un-masks.
void applyHeaderMask(PageBytes& page);

class Header
{
public:
    /// Reads page 0 as stored. Raises NotADatabase for anything but the Jet 4 generation, naming what it is.
    explicit Header(const PageBytes& page);

    [[nodiscard]] std::uint32_t pageKey() const;
    /// UTF-16; empty when there is none.
    [[nodiscard]] Bytes password() const;
    /// True for the order whose keys this engine can compute.
    [[nodiscard]] bool generalOrder() const;
    /// Key of the stream that masks account ids.
    [[nodiscard]] std::uint32_t accountKey() const;
    /// UTF-16; raises TooLong.
    void setPassword(ByteView password);
    /// Page 0 as stored.
    [[nodiscard]] PageBytes stored() const;

    /// Page 0 of a new file.
    [[nodiscard]] static Header makeNew(double creationStamp);

private:
    Header() = default;
    [[nodiscard]] std::array<std::uint8_t, 4> stampMask() const;
    PageBytes m_plain{}; ///< With the header mask taken off.
};

} // namespace accessfile
