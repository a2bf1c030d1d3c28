#pragma once

#include "accessfile/file/Page.h"

// Page 0 from 0xE00 on: 256 counters, one for each user of the file and slot 0 for one who has it alone. A counter goes
// up by one with every batch of pages that its user has written; 0 stands there while he writes them. Nothing else in
// the file tells that somebody has changed it.
namespace accessfile {

class CommitTable
{
public:
    static constexpr std::size_t offset = 0xE00;
    static constexpr std::size_t slots = 256;
    static constexpr std::uint16_t writing = 0x0000;
    static constexpr std::uint16_t damaged = 0x0001; ///< Its user met a page that he could not read.
    static constexpr std::uint16_t first = 0x0100;

    [[nodiscard]] std::uint16_t slot(std::size_t number) const { return load16(m_bytes.data() + 2 * number); }
    void setSlot(std::size_t number, std::uint16_t value) { store16(m_bytes.data() + 2 * number, value); }
    [[nodiscard]] std::span<std::uint8_t> bytes() { return m_bytes; }
    [[nodiscard]] ByteView bytes() const { return m_bytes; }

    /// First slot that is no counter; `slots` when all are.
    [[nodiscard]] std::size_t firstUnsettled() const
    {
        for (std::size_t number = 0; number < slots; ++number) {
            if (slot(number) < first)
                return number;
        }
        return slots;
    }
    /// True when all slots but slot 0 are the same.
    [[nodiscard]] bool sameOthers(const CommitTable& other) const
    {
        return std::equal(m_bytes.begin() + 2, m_bytes.end(), other.m_bytes.begin() + 2);
    }
    bool operator==(const CommitTable&) const = default;

    /// What a counter becomes; the values below `first` are states.
    [[nodiscard]] static constexpr std::uint16_t next(std::uint16_t value)
    {
        return value == 0xFFFF || value < first ? first : static_cast<std::uint16_t>(value + 1);
    }

private:
    std::array<std::uint8_t, 2 * slots> m_bytes{};
};

} // namespace accessfile
