#include "accessfile/check/Verify.h"

#include <algorithm>

namespace accessfile {

namespace {

constexpr std::size_t deepest = 12;
constexpr std::size_t freeAt = 2;

} // namespace

void IndexVerifier::run(const std::set<PageNumber>& owned, const std::vector<Bytes>* entries)
{
    walk(m_index.root, 0, nullptr);
    for (const PageNumber page : m_seen) {
        if (!owned.contains(page))
            m_record.fault(m_name + ": a página " + std::to_string(page) + " não está no mapa do índice.");
    }
    for (const PageNumber page : owned) {
        if (!m_seen.contains(page))
            m_record.fault(m_name + ": a página " + std::to_string(page) + " está no mapa e não na árvore.");
    }
    checkChain();
    for (std::size_t i = 1; i < m_found.size(); ++i) {
        if (compareEntries(m_found[i - 1], m_found[i]) >= 0) {
            m_record.fault(m_name + ": os registros do índice estão fora de ordem.");
            break;
        }
    }
    if (entries != nullptr)
        compare(*entries);
}

void IndexVerifier::walk(PageNumber number, std::size_t depth, const Bytes* bound)
{
    if (depth >= deepest || !m_seen.insert(number).second)
        throwDamaged("a árvore volta à página " + std::to_string(number));
    const IndexPage page = IndexPage::read(*m_space.pager.page(number));
    if (page.owner != m_owner)
        m_record.fault(m_name + ": a página " + std::to_string(number) + " é de outra tabela.");
    checkSpace(number, page);
    if (page.leaf) {
        if (m_leaves.empty())
            m_leafDepth = depth;
        else if (m_leafDepth != depth)
            m_record.fault(m_name + ": as folhas da árvore não estão no mesmo nível.");
        if (page.level != 0)
            m_record.fault(m_name + ": uma folha traz um nível.");
        m_leaves.push_back({number, page.previous, page.next});
        for (std::size_t i = 0; i < page.entries.size(); ++i)
            m_found.emplace_back(page.entries[i].begin(), page.entries[i].end());
        if (bound != nullptr && !page.entries.empty() && compareEntries(m_found.back(), *bound) > 0)
            m_record.fault(m_name + ": a página " + std::to_string(number) + " passa do limite dado pelo nó acima.");
        return;
    }
    Bytes previous;
    for (std::size_t i = 0; i <= page.entries.size(); ++i) {
        Bytes own;
        if (i < page.entries.size()) {
            const ByteView part = page.leafPart(i);
            own.assign(part.begin(), part.end());
            if (!previous.empty() && compareEntries(previous, own) >= 0)
                m_record.fault(m_name + ": os limites do nó " + std::to_string(number) + " estão fora de ordem.");
        }
        const std::size_t first = m_found.size();
        walk(page.child(i), depth + 1, i < page.entries.size() ? &own : bound);
        if (!previous.empty() && first < m_found.size() && compareEntries(m_found[first], previous) <= 0)
            m_record.fault(m_name + ": o nó " + std::to_string(number) + " não leva ao primeiro registro de um filho.");
        previous = std::move(own);
    }
}

void IndexVerifier::checkSpace(PageNumber number, const IndexPage& page)
{
    const PageBytes& stored = *m_space.pager.page(number);
    // A node whose last child has an entry was read without that entry.
    const bool complete = page.leaf || load32(stored.data() + indexpage::tailAt) != 0;
    const std::size_t prefix = load16(stored.data() + indexpage::prefixAt);
    std::size_t used = 0;
    for (std::size_t i = 0; i < page.entries.size(); ++i)
        used += page.entries[i].size() - (i == 0 ? 0 : prefix);
    if (complete && load16(stored.data() + freeAt) != indexEntryArea - used)
        m_record.fault(m_name + ": o espaço livre da página " + std::to_string(number) + " não confere.");
}

void IndexVerifier::checkChain()
{
    for (std::size_t i = 0; i < m_leaves.size(); ++i) {
        const PageNumber previous = i == 0 ? 0 : m_leaves[i - 1].number;
        const PageNumber next = i + 1 == m_leaves.size() ? 0 : m_leaves[i + 1].number;
        if (m_leaves[i].previous != previous || m_leaves[i].next != next)
            m_record.fault(m_name + ": a folha " + std::to_string(m_leaves[i].number) +
                           " não está encadeada com as vizinhas.");
    }
}

void IndexVerifier::compare(const std::vector<Bytes>& expected)
{
    if (m_found.size() != expected.size())
        m_record.fault(m_name + ": tem " + std::to_string(m_found.size()) + " registros em vez de " +
                       std::to_string(expected.size()) + ".");
    const std::size_t common = std::min(m_found.size(), expected.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (m_found[i] != expected[i]) {
            const RowId row = rowOf(expected[i]);
            m_record.fault(m_name + ": a chave do registro " + std::to_string(row.page) + "/" +
                           std::to_string(row.slot) + " não é a que está no índice.");
            return;
        }
    }
}

} // namespace accessfile
