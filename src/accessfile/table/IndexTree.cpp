#include "accessfile/table/IndexTree.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::size_t deepest = 12;

Bytes nodeEntry(ByteView leafEntry, PageNumber child)
{
    Bytes entry(leafEntry.begin(), leafEntry.end());
    for (int shift = 24; shift >= 0; shift -= 8)
        entry.push_back(static_cast<std::uint8_t>(child >> shift & 0xFF));
    return entry;
}

Bytes copyOf(ByteView bytes)
{
    return {bytes.begin(), bytes.end()};
}

} // namespace

std::optional<ByteView> IndexPosition::entry()
{
    while (m_index >= m_leaf.size()) {
        if (m_leaf.next() == 0)
            return std::nullopt;
        if (++m_leavesSeen > m_pager.pageCount())
            throwDamaged("cadeia de páginas de um índice");
        PagePointer following = m_pager.page(m_leaf.next());
        IndexPageView leaf(*following);
        if (!leaf.isLeaf() || leaf.owner() != m_leaf.owner())
            throwDamaged("cadeia de páginas de um índice");
        m_page = std::move(following);
        m_leaf = std::move(leaf);
        m_index = 0;
    }
    m_leaf.entry(m_index, m_entry);
    return m_entry;
}

IndexPage IndexTree::load(PageNumber number) const
{
    IndexPage page = IndexPage::read(*m_space.pager.page(number));
    if (page.owner != m_owner)
        throwDamaged("página de índice de outra tabela");
    return page;
}

void IndexTree::save(PageNumber number, const IndexPage& page)
{
    page.write(m_space.pager.modify(number));
}

PageNumber IndexTree::newPage()
{
    const PageNumber number = m_space.allocator.allocate();
    UsageMap(m_space.pager, m_map).add(number, m_space.allocator);
    return number;
}

void IndexTree::dropPage(PageNumber number)
{
    UsageMap map(m_space.pager, m_map);
    if (!map.contains(number))
        throwDamaged("página de índice fora do mapa");
    map.remove(number);
    m_space.allocator.release(number);
}

std::vector<IndexTree::Step> IndexTree::descend(ByteView entry) const
{
    std::vector<Step> path;
    PageNumber number = m_root;
    while (true) {
        if (path.size() >= deepest)
            throwDamaged("índice fundo demais");
        Step step{number, load(number), 0};
        step.index = step.page.lowerBound(entry);
        const bool leaf = step.page.leaf;
        number = leaf ? 0 : step.page.child(step.index);
        path.push_back(std::move(step));
        if (leaf)
            return path;
    }
}

IndexTree::Leaf IndexTree::leafFor(ByteView entry) const
{
    PageNumber number = m_root;
    for (std::size_t depth = 0; depth < deepest; ++depth) {
        PagePointer page = m_space.pager.page(number);
        IndexPageView view(*page);
        if (view.owner() != m_owner)
            throwDamaged("página de índice de outra tabela");
        if (view.isLeaf())
            return {number, std::move(page), std::move(view)};
        number = view.child(view.lowerBound(entry));
    }
    throwDamaged("índice fundo demais");
}

IndexPosition IndexTree::find(ByteView key) const
{
    const Bytes entry = makeEntry(key, {});
    Leaf leaf = leafFor(entry);
    const std::size_t index = leaf.view.lowerBound(entry);
    IndexPosition position(m_space.pager, std::move(leaf.page), std::move(leaf.view));
    position.m_index = index;
    return position;
}

std::optional<RowId> IndexTree::rowWithKey(ByteView key, std::optional<RowId> except) const
{
    IndexPosition position = find(key);
    while (const auto entry = position.entry()) {
        if (compareKeys(keyOf(*entry), key) != 0)
            return std::nullopt;
        const RowId row = rowOf(*entry);
        if (row != except)
            return row;
        position.advance();
    }
    return std::nullopt;
}

bool IndexTree::insert(ByteView key, RowId row)
{
    const Bytes entry = makeEntry(key, row);
    const auto [number, page, view] = leafFor(entry);
    const std::size_t index = view.lowerBound(entry);
    bool known = false;
    Bytes neighbour;
    if (index < view.size()) {
        view.entry(index, neighbour);
        if (compareEntries(neighbour, entry) == 0)
            throwDamaged("índice com um registro repetido");
        known = compareKeys(keyOf(neighbour), key) == 0;
    }
    if (index > 0 && !known) {
        view.entry(index - 1, neighbour);
        known = compareKeys(keyOf(neighbour), key) == 0;
    }
    if (view.insert(m_space.pager.modify(number), index, entry))
        return !known;
    // The page is full, or what its entries share changes.
    std::vector<Step> path = descend(entry);
    Step& leaf = path.back();
    leaf.page.entries.insert(leaf.index, entry);
    if (leaf.page.fits())
        save(leaf.number, leaf.page);
    else
        splitUp(path);
    return !known;
}

void IndexTree::splitUp(std::vector<Step>& path)
{
    for (std::size_t depth = path.size(); depth-- > 0;) {
        Step& step = path[depth];
        if (step.page.fits()) {
            save(step.number, step.page);
            if (!step.page.leaf && step.page.level > 1)
                linkChildren(step.page);
            return;
        }
        // Cut near the byte middle; a new highest entry starts a fresh page, so that ascending loads pack fully.
        const EntryList& entries = step.page.entries;
        const std::size_t count = entries.size();
        std::size_t cut = 0;
        if (step.page.leaf && step.page.next == 0 && step.index + 1 == count) {
            cut = count - 1;
        } else {
            std::size_t total = 0;
            for (std::size_t i = 0; i < count; ++i)
                total += entries[i].size();
            for (std::size_t sum = 0; cut < count && sum < total / 2; ++cut)
                sum += entries[cut].size();
        }
        cut = std::clamp<std::size_t>(cut, 1, count - 1);

        IndexPage left = step.page;
        IndexPage right = step.page;
        left.entries = {};
        right.entries = {};
        Bytes bound;
        if (step.page.leaf) {
            for (std::size_t i = 0; i < count; ++i)
                (i < cut ? left : right).entries.push(entries[i]);
            bound = copyOf(entries[cut - 1]);
        } else {
            // The child at the cut becomes the left node's tail; its bound moves up.
            if (count < 3)
                throwDamaged("página de índice");
            cut = std::clamp<std::size_t>(cut, 1, count - 2);
            for (std::size_t i = 0; i < count; ++i) {
                if (i != cut)
                    (i < cut ? left : right).entries.push(entries[i]);
            }
            bound = copyOf(step.page.leafPart(cut));
            left.tail = step.page.child(cut);
        }
        if (!left.fits() || !right.fits())
            throwDamaged("página de índice");

        const PageNumber rightNumber = newPage();
        const bool isRoot = depth == 0;
        const PageNumber leftNumber = isRoot ? newPage() : step.number;
        if (isRoot) {
            left.previous = 0;
            right.next = 0;
        }
        left.next = rightNumber;
        right.previous = leftNumber;
        if (!isRoot && right.next != 0) {
            IndexPage neighbour = load(right.next);
            neighbour.previous = rightNumber;
            save(right.next, neighbour);
        }
        save(leftNumber, left);
        save(rightNumber, right);
        if (!left.leaf && left.level > 1) {
            linkChildren(left);
            linkChildren(right);
        }
        if (isRoot) {
            IndexPage root;
            root.leaf = false;
            root.owner = m_owner;
            root.level = static_cast<std::uint8_t>(step.page.leaf ? 1 : step.page.level + 1);
            root.entries.push(nodeEntry(bound, leftNumber));
            root.tail = rightNumber;
            save(m_root, root);
            return;
        }
        // The old bound of this child now bounds the right half.
        Step& parent = path[depth - 1];
        EntryList& bounds = parent.page.entries;
        if (parent.index < bounds.size()) {
            const Bytes oldBound = copyOf(parent.page.leafPart(parent.index));
            bounds.erase(parent.index);
            bounds.insert(parent.index, nodeEntry(oldBound, rightNumber));
        } else {
            parent.page.tail = rightNumber;
        }
        bounds.insert(parent.index, nodeEntry(bound, leftNumber));
    }
}

void IndexTree::linkChildren(const IndexPage& parent)
{
    // Nodes are chained under one parent only.
    const std::size_t children = parent.entries.size() + 1;
    for (std::size_t i = 0; i < children; ++i) {
        const PageNumber number = parent.child(i);
        const PageNumber previous = i == 0 ? 0 : parent.child(i - 1);
        const PageNumber next = i + 1 == children ? 0 : parent.child(i + 1);
        IndexPage page = load(number);
        if (page.leaf)
            throwDamaged("nível de uma página de índice");
        if (page.previous != previous || page.next != next) {
            page.previous = previous;
            page.next = next;
            save(number, page);
        }
    }
}

void IndexTree::erase(ByteView key, RowId row)
{
    const Bytes entry = makeEntry(key, row);
    const auto [number, page, view] = leafFor(entry);
    const std::size_t index = view.lowerBound(entry);
    Bytes found;
    if (index < view.size())
        view.entry(index, found);
    if (found.empty() || compareEntries(found, entry) != 0)
        throwDamaged("índice sem o registro que deveria ter");
    // The last entry of a leaf is a bound in the nodes above; behind the last leaf there is none.
    const bool isBound = index + 1 == view.size() && view.next() != 0;
    if (view.size() > 1 && !isBound && view.erase(m_space.pager.modify(number), index))
        return;
    std::vector<Step> path = descend(entry);
    Step& leaf = path.back();
    leaf.page.entries.erase(leaf.index);
    if (leaf.page.entries.empty() && path.size() > 1)
        return removeLeaf(path);
    save(leaf.number, leaf.page);
    if (isBound)
        lowerBound(path, path.size() - 1, leaf.page.entries[leaf.page.entries.size() - 1]);
}

void IndexTree::eraseRow(RowId row)
{
    for (IndexPosition position = find({});; position.advance()) {
        const auto entry = position.entry();
        if (!entry)
            throwDamaged("índice sem o registro que deveria ter");
        if (rowOf(*entry) == row)
            return erase(copyOf(keyOf(*entry)), row);
    }
}

/// The child at `depth` of the path ends lower now: the nearest node that has an entry for it says so. Access would
/// take the higher bound as well, but other readers compare the two.
void IndexTree::lowerBound(std::vector<Step>& path, std::size_t depth, ByteView bound)
{
    while (depth-- > 0) {
        Step& parent = path[depth];
        EntryList& bounds = parent.page.entries;
        if (parent.index >= bounds.size())
            continue;
        const PageNumber child = parent.page.child(parent.index);
        bounds.erase(parent.index);
        bounds.insert(parent.index, nodeEntry(bound, child));
        // A node that has no room for it keeps the higher bound.
        if (parent.page.fits())
            save(parent.number, parent.page);
        return;
    }
}

void IndexTree::removeLeaf(std::vector<Step>& path)
{
    const Step& leaf = path.back();
    Step& parent = path[path.size() - 2];
    if (parent.page.entries.size() < (path.size() == 2 ? 1U : 2U)) {
        // A node may not end with a lone child: rare enough to build the whole index anew.
        save(leaf.number, leaf.page);
        std::vector<Bytes> entries = collect();
        rebuild(std::move(entries));
        return;
    }
    const PageNumber previous = leaf.page.previous;
    const PageNumber next = leaf.page.next;
    if (previous != 0) {
        IndexPage page = load(previous);
        page.next = next;
        save(previous, page);
    }
    if (next != 0) {
        IndexPage page = load(next);
        page.previous = previous;
        save(next, page);
    }
    EntryList& bounds = parent.page.entries;
    std::optional<Bytes> lowered;
    if (parent.index < bounds.size()) {
        bounds.erase(parent.index);
    } else {
        lowered = copyOf(parent.page.leafPart(bounds.size() - 1));
        parent.page.tail = parent.page.child(bounds.size() - 1);
        bounds.erase(bounds.size() - 1);
    }
    dropPage(leaf.number);
    if (!bounds.empty()) {
        save(parent.number, parent.page);
        if (lowered)
            lowerBound(path, path.size() - 2, *lowered);
        return;
    }
    // The root was left with one leaf: it becomes that leaf.
    const PageNumber last = parent.page.tail;
    IndexPage only = load(last);
    only.previous = 0;
    only.next = 0;
    save(m_root, only);
    dropPage(last);
}

std::vector<Bytes> IndexTree::collect() const
{
    std::vector<Bytes> entries;
    IndexPosition position = find({});
    while (const auto entry = position.entry()) {
        entries.push_back(copyOf(*entry));
        position.advance();
    }
    return entries;
}

void IndexTree::rebuild(std::vector<Bytes> entries)
{
    std::sort(entries.begin(), entries.end(),
              [](const Bytes& left, const Bytes& right) { return compareEntries(left, right) < 0; });
    std::vector<PageNumber> spare = UsageMap(m_space.pager, m_map).pages();
    std::erase(spare, m_root);
    const auto take = [&] {
        if (spare.empty())
            return newPage();
        const PageNumber page = spare.front();
        spare.erase(spare.begin());
        return page;
    };
    struct Child
    {
        Bytes last;
        PageNumber page = 0;
    };

    // Leaves, from left to right. Sizes are taken without the common prefix, which leaves room to grow.
    std::vector<IndexPage> leaves(1);
    std::size_t used = 0;
    for (const Bytes& entry : entries) {
        if (used + entry.size() > indexEntryArea) {
            leaves.emplace_back();
            used = 0;
        }
        leaves.back().entries.push(entry);
        used += entry.size();
    }
    for (IndexPage& leaf : leaves)
        leaf.owner = m_owner;
    if (leaves.size() == 1) {
        save(m_root, leaves.front());
    } else {
        std::vector<Child> level;
        for (const IndexPage& leaf : leaves)
            level.push_back({copyOf(leaf.entries[leaf.entries.size() - 1]), take()});
        for (std::size_t i = 0; i < leaves.size(); ++i) {
            leaves[i].previous = i == 0 ? 0 : level[i - 1].page;
            leaves[i].next = i + 1 == leaves.size() ? 0 : level[i + 1].page;
            save(level[i].page, leaves[i]);
        }
        for (std::uint8_t height = 1; level.size() > 1; ++height) {
            // Children of each node: all but the last have entries. No node may have a single child.
            std::vector<std::vector<Child>> groups(1);
            used = 0;
            for (const Child& child : level) {
                if (used + child.last.size() + childBytes > indexEntryArea) {
                    groups.emplace_back();
                    used = 0;
                }
                groups.back().push_back(child);
                used += child.last.size() + childBytes;
            }
            if (groups.size() > 1 && groups.back().size() == 1) {
                groups.back().insert(groups.back().begin(), groups[groups.size() - 2].back());
                groups[groups.size() - 2].pop_back();
            }
            std::vector<Child> above;
            for (const auto& group : groups) {
                IndexPage node;
                node.leaf = false;
                node.owner = m_owner;
                node.level = height;
                for (std::size_t i = 0; i + 1 < group.size(); ++i)
                    node.entries.push(nodeEntry(group[i].last, group[i].page));
                node.tail = group.back().page;
                const PageNumber number = groups.size() == 1 ? m_root : take();
                save(number, node);
                if (height > 1)
                    linkChildren(node);
                above.push_back({group.back().last, number});
            }
            level = std::move(above);
        }
    }
    for (const PageNumber page : spare)
        dropPage(page);
}

} // namespace accessfile
