// Windows-1252 conversion by table; 0x80 to 0x9F is the only range that differs from Latin-1.
#include "korvex/runtime/Windows1252.h"

#include <QHash>

#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__)
#include <immintrin.h>
#define KORVEX_WIDE_DECODE 1
#endif

namespace korvex {
namespace {

constexpr char16_t HighControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

char16_t FromByte(unsigned char b)
{
    return (b >= 0x80 && b < 0xA0) ? HighControls[b - 0x80] : static_cast<char16_t>(b);
}

const QHash<char16_t, char>& ReverseTable()
{
    static const QHash<char16_t, char> table = [] {
        QHash<char16_t, char> t;
        for (int i = 0; i < 32; ++i)
            t.insert(HighControls[i], static_cast<char>(0x80 + i));
        return t;
    }();
    return table;
}

}  // namespace

QString FromWindows1252(QByteArrayView bytes)
{
    QString text;
    FromWindows1252(bytes, text);
    return text;
}

void FromWindows1252(QByteArrayView bytes, QString& text)
{
    text.resize(bytes.size());
    FromWindows1252(bytes, reinterpret_cast<char16_t*>(text.data()));
}

#if defined(KORVEX_WIDE_DECODE)
namespace {

// With AVX-512 a line of a hundred bytes is four steps of 32, the last one masked, so that no
// byte is widened twice and short texts need no loop of their own.
[[gnu::target("avx512bw,avx512vl")]] void FromWindows1252Widest(const unsigned char* in, qsizetype n, char16_t* out)
{
    const __m256i top3 = _mm256_set1_epi8(static_cast<char>(0xE0));
    const __m256i high = _mm256_set1_epi8(static_cast<char>(0x80));
    for (qsizetype i = 0; i < n; i += 32) {
        const __mmask32 valid = n - i >= 32 ? ~__mmask32{0} : (__mmask32{1} << (n - i)) - 1;
        const __m256i block = _mm256_maskz_loadu_epi8(valid, in + i);
        _mm512_mask_storeu_epi16(out + i, valid, _mm512_cvtepu8_epi16(block));
        for (__mmask32 controls = _mm256_mask_cmpeq_epi8_mask(valid, _mm256_and_si256(block, top3), high); controls != 0;
             controls &= controls - 1) {
            const qsizetype at = i + std::countr_zero(controls);
            out[at] = FromByte(in[at]);
        }
    }
}

bool HasWidest()
{
    static const bool has = __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    return has;
}

}  // namespace
#endif

void FromWindows1252(QByteArrayView bytes, char16_t* out)
{
    const qsizetype n = bytes.size();
#if defined(KORVEX_WIDE_DECODE)
    if (HasWidest())
        return FromWindows1252Widest(reinterpret_cast<const unsigned char*>(bytes.data()), n, out);
#endif
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto fromTable = [&](qsizetype i) { out[i] = FromByte(in[i]); };
#if defined(__SSE2__)
    if (n >= 16) {
        // Sixteen bytes at a time are widened as Latin-1; the few in 0x80 to 0x9F are then put
        // right from the table. The last sixteen overlap the ones before rather than leave a
        // tail to go byte by byte.
        const __m128i zero = _mm_setzero_si128();
        const __m128i top3 = _mm_set1_epi8(static_cast<char>(0xE0));
        const __m128i high = _mm_set1_epi8(static_cast<char>(0x80));
        for (qsizetype i = 0;; i += 16) {
            if (i + 16 > n)
                i = n - 16;
            const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi8(block, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 8), _mm_unpackhi_epi8(block, zero));
            for (auto controls = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_and_si128(block, top3), high)));
                 controls != 0; controls &= controls - 1)
                fromTable(i + std::countr_zero(controls));
            if (i + 16 == n)
                return;
        }
    }
#endif
    for (qsizetype i = 0; i < n; ++i)
        fromTable(i);
}

QByteArray ToWindows1252(QStringView text)
{
    QByteArray bytes(text.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
            bytes[i] = static_cast<char>(c);
        } else {
            auto it = ReverseTable().constFind(c);
            bytes[i] = it != ReverseTable().cend() ? *it : '?';
        }
    }
    return bytes;
}

}  // namespace korvex
