#pragma once

#include "accessfile/file/Page.h"

#include <optional>
#include <string>
#include <vector>

namespace accessfile {

struct Column;

/// Designer properties of a table: what the catalog keeps in its property blob. Unknown parts survive a rewrite byte
/// for byte.
class Properties
{
public:
    /// An empty or unreadable blob gives no properties; `readable` tells.
    explicit Properties(ByteView blob);

    [[nodiscard]] bool readable() const { return m_readable; }
    /// Property of a column, or of the table itself when `owner` is empty.
    [[nodiscard]] std::optional<std::string> text(std::string_view owner, std::string_view property) const;
    [[nodiscard]] std::optional<bool> flag(std::string_view owner, std::string_view property) const;
    /// True when the table or a column carries the property with a text.
    [[nodiscard]] bool anyText(std::string_view property) const;

    /// Adds what a new column declares; nothing when it declares nothing.
    void addColumn(const Column& column);
    /// The blob; empty when there is no property at all.
    [[nodiscard]] Bytes blob() const;

private:
    struct Item
    {
        std::string owner;
        std::string name;
        std::uint8_t type = 0;
        Bytes value;
    };
    struct Chunk
    {
        std::uint16_t kind = 0;
        Bytes body;
    };
    void parse(ByteView blob);
    void parseOwner(const Chunk& chunk);
    [[nodiscard]] const Item* find(std::string_view owner, std::string_view property) const;
    [[nodiscard]] std::size_t nameIndex(const std::string& name);

    std::vector<Chunk> m_chunks;
    std::vector<std::string> m_names;
    std::vector<Item> m_items;
    bool m_readable = true;
};

} // namespace accessfile
