// Folding to bytes, the byte search and the folded column store.
#include "korvex/platform/ado/FoldedText.h"

#include "korvex/platform/ado/TextCompare.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace korvex::ado {
namespace {

// A store whose moved texts outgrow this share of its bytes is packed again.
constexpr std::size_t CompactDivisor = 4;
constexpr std::size_t CompactSlack = 1 << 16;

}  // namespace

void AppendFolded(QStringView text, std::string& out)
{
    const char16_t* p = text.utf16();
    unsigned char bytes[3];
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = FoldCase(p[i]);
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
            continue;
        }
        const int n = EncodeFolded(c, bytes);
        out.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(n));
    }
}

std::string Folded(QStringView text)
{
    std::string out;
    out.reserve(static_cast<std::size_t>(text.size()));
    AppendFolded(text, out);
    return out;
}

std::uint64_t HeadKey(std::string_view bytes) noexcept
{
    std::uint64_t key = 0;
    const std::size_t n = std::min<std::size_t>(bytes.size(), 8);
    for (std::size_t i = 0; i < n; ++i)
        key |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (56 - 8 * i);
    return key;
}

std::uint64_t TailKey(std::string_view bytes) noexcept
{
    std::uint64_t key = 0;
    const std::size_t n = std::min<std::size_t>(bytes.size(), 8);
    for (std::size_t i = 0; i < n; ++i)
        key |= std::uint64_t{static_cast<unsigned char>(bytes[bytes.size() - 1 - i])} << (56 - 8 * i);
    return key;
}

int CompareReversed(std::string_view a, std::string_view b) noexcept
{
    std::size_t i = a.size();
    std::size_t j = b.size();
    while (i > 0 && j > 0) {
        const auto x = static_cast<unsigned char>(a[--i]);
        const auto y = static_cast<unsigned char>(b[--j]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return i == j ? 0 : (i < j ? -1 : 1);
}

std::size_t FindBytes(std::string_view text, std::string_view needle, std::size_t from) noexcept
{
    const std::size_t m = needle.size();
    const std::size_t n = text.size();
    if (m == 0)
        return from <= n ? from : std::string_view::npos;
    if (from > n || n - from < m)
        return std::string_view::npos;
    const char* base = text.data();
    if (m == 1) {
        const void* hit = std::memchr(base + from, needle[0], n - from);
        return hit ? static_cast<std::size_t>(static_cast<const char*>(hit) - base) : std::string_view::npos;
    }
    std::size_t i = from;
#if defined(__SSE2__)
    // Sixteen places at a time: a place is a candidate when the needle's first and last bytes
    // both fit; only candidates are compared in full.
    const __m128i first = _mm_set1_epi8(needle[0]);
    const __m128i last = _mm_set1_epi8(needle[m - 1]);
    for (; i + m - 1 + 16 <= n; i += 16) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(base + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(base + i + m - 1));
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, last))));
        while (mask != 0) {
            const auto bit = static_cast<std::size_t>(__builtin_ctz(mask));
            if (std::memcmp(base + i + bit + 1, needle.data() + 1, m - 2) == 0)
                return i + bit;
            mask &= mask - 1;
        }
    }
#endif
    for (; i + m <= n; ++i) {
        if (base[i] == needle[0] && std::memcmp(base + i + 1, needle.data() + 1, m - 1) == 0)
            return i;
    }
    return std::string_view::npos;
}

bool FoldedPattern::Matches(std::string_view text) const noexcept
{
    if (!lead && !trail && pieces.size() == 1)
        return text == pieces.front();
    std::size_t begin = 0;
    std::size_t end = text.size();
    std::size_t first = 0;
    std::size_t last = pieces.size();
    if (!lead) {
        if (!text.starts_with(pieces.front()))
            return false;
        begin = pieces.front().size();
        first = 1;
    }
    if (!trail) {
        const std::string& tail = pieces.back();
        if (end - begin < tail.size() || !text.ends_with(tail))
            return false;
        end -= tail.size();
        --last;
    }
    // The pieces between wildcards, each at its first place after the one before: taking the
    // earliest place leaves the most room for the rest.
    const std::string_view middle = text.substr(0, end);
    for (std::size_t k = first; k < last; ++k) {
        const std::size_t at = FindBytes(middle, pieces[k], begin);
        if (at == std::string_view::npos)
            return false;
        begin = at + pieces[k].size();
    }
    return true;
}

const std::string& FoldedPattern::Longest() const noexcept
{
    return *std::max_element(pieces.begin(), pieces.end(),
                             [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
}

std::size_t FoldedText::FoldedSize(QStringView text) noexcept
{
    std::size_t bytes = 0;
    for (QChar c : text) {
        const char16_t f = FoldCase(c.unicode());
        bytes += f < 0x80 ? 1 : (f < 0x800 ? 2 : 3);
    }
    return bytes;
}

void FoldedText::Append(QStringView text)
{
    if (mStart.empty())
        mStart.push_back(0);
    AppendFolded(text, mBytes);
    mStart.push_back(static_cast<std::uint32_t>(mBytes.size()));
}

void FoldedText::Set(RowId row, QStringView text)
{
    // The old place is blanked so that searches of the packed bytes no longer find the row there.
    if (auto it = mMoved.find(row); it != mMoved.end())
        std::fill_n(mTail.begin() + it->second.start, it->second.length, Blank);
    else
        std::fill(mBytes.begin() + mStart[row], mBytes.begin() + mStart[row + 1], Blank);
    const auto start = static_cast<std::uint32_t>(mTail.size());
    AppendFolded(text, mTail);
    mMoved[row] = {start, static_cast<std::uint32_t>(mTail.size() - start)};
    if (mTail.size() > mBytes.size() / CompactDivisor + CompactSlack)
        Compact();
}

void FoldedText::Compact()
{
    std::string bytes;
    bytes.reserve(mBytes.size());
    std::vector<std::uint32_t> start;
    start.reserve(mStart.size());
    start.push_back(0);
    for (RowId row = 0; row + 1 < mStart.size(); ++row) {
        bytes.append(View(row));
        start.push_back(static_cast<std::uint32_t>(bytes.size()));
    }
    mBytes = std::move(bytes);
    mStart = std::move(start);
    mMoved.clear();
    mTail.clear();
    mTail.shrink_to_fit();
}

std::vector<RowId> FoldedText::Containing(std::string_view needle) const
{
    std::vector<RowId> rows;
    const std::string_view bytes(mBytes);
    std::size_t at = FindBytes(bytes, needle, 0);
    auto row = mStart.begin();
    while (at != std::string_view::npos) {
        // Hits come in order: gallop forward from the last row to the one holding this hit.
        std::size_t step = 1;
        auto probe = row;
        while (probe + static_cast<std::ptrdiff_t>(step) < mStart.end() && *(probe + static_cast<std::ptrdiff_t>(step)) <= at) {
            probe += static_cast<std::ptrdiff_t>(step);
            step *= 2;
        }
        const auto limit = std::min(probe + static_cast<std::ptrdiff_t>(step), mStart.end());
        row = std::upper_bound(probe, limit, static_cast<std::uint32_t>(at)) - 1;
        if (at + needle.size() > *(row + 1)) {
            at = FindBytes(bytes, needle, at + 1);  // runs on into the next row: no match
            continue;
        }
        rows.push_back(static_cast<RowId>(row - mStart.begin()));
        at = FindBytes(bytes, needle, *(row + 1));  // one hit a row is enough
    }
    if (!mMoved.empty()) {
        const std::size_t packed = rows.size();
        for (const auto& [moved, slot] : mMoved) {
            if (FindBytes(std::string_view(mTail).substr(slot.start, slot.length), needle) != std::string_view::npos)
                rows.push_back(moved);
        }
        std::sort(rows.begin() + static_cast<std::ptrdiff_t>(packed), rows.end());
        std::inplace_merge(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(packed), rows.end());
    }
    return rows;
}

std::size_t FoldedText::BytesAllocated() const noexcept
{
    return mBytes.capacity() + mStart.capacity() * sizeof(std::uint32_t) + mTail.capacity() +
           mMoved.size() * (sizeof(Slot) + sizeof(RowId) + 2 * sizeof(void*));
}

}  // namespace korvex::ado
