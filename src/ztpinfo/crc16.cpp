#include "ztpinfo/crc16.h"

#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

constexpr uint32_t POLYNOMIAL = 0x8005;  // x^16 + x^15 + x^2 + 1 without its top bit
constexpr uint32_t SLICES = 16;          // bytes per step of the sliced form

using SliceTable = std::array<uint16_t, 256>;

// `crc` after `count` zero bits.
constexpr uint16_t shift_bits(uint16_t crc, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t carry = (crc & 0x8000) != 0 ? POLYNOMIAL : 0;
        crc = static_cast<uint16_t>(static_cast<uint32_t>(crc) << 1 ^ carry);
    }
    return crc;
}

// Table s, entry i: the register after the byte i and s zero bytes.
constexpr std::array<SliceTable, SLICES> make_slice_tables() {
    std::array<SliceTable, SLICES> tables{};
    for (uint32_t i = 0; i < 256; ++i) tables[0][i] = shift_bits(static_cast<uint16_t>(i << 8), 8);
    for (uint32_t s = 1; s < SLICES; ++s) {
        for (uint32_t i = 0; i < 256; ++i) {
            const uint16_t before = tables[s - 1][i];
            tables[s][i] = static_cast<uint16_t>(before << 8 ^ tables[0][before >> 8]);
        }
    }
    return tables;
}

constexpr std::array<SliceTable, SLICES> TABLES = make_slice_tables();
static_assert(TABLES[0][1] == 0x8005 && TABLES[0][255] == 0x0202);

}  // namespace

uint16_t crc16_table(uint16_t crc, std::span<const uint16_t> words) {
    for (const uint16_t word : words) {
        crc = static_cast<uint16_t>(crc << 8 ^ TABLES[0][(crc ^ word) >> 8]);
        crc = static_cast<uint16_t>(crc << 8 ^ TABLES[0][(crc >> 8 ^ word) & 0xFF]);
    }
    return crc;
}

uint16_t crc16_slicing(uint16_t crc, std::span<const uint16_t> words) {
    while (words.size() >= SLICES / 2) {
        // The register stands over the first word of the step; every byte then counts with the zero bytes behind it.
        uint32_t next = 0;
        uint32_t head = crc;
        for (uint32_t i = 0; i < SLICES / 2; ++i) {
            const uint32_t word = words[i] ^ head;
            next ^= TABLES[SLICES - 1 - 2 * i][word >> 8] ^ TABLES[SLICES - 2 - 2 * i][word & 0xFF];
            head = 0;
        }
        crc = static_cast<uint16_t>(next);
        words = words.subspan(SLICES / 2);
    }
    return crc16_table(crc, words);
}

#if defined(__x86_64__)

namespace {

constexpr size_t BLOCK_WORDS = 8;  // 128 bits
constexpr uint32_t LANES = 4;

// x^n modulo the generator is what n zero bits make of the register 1. For the two halves of a block, before one more
// block and before as many as there are lanes.
constexpr uint64_t UPPER_BY_1 = shift_bits(1, 128 + 64);
constexpr uint64_t LOWER_BY_1 = shift_bits(1, 128);
constexpr uint64_t UPPER_BY_LANES = shift_bits(1, LANES * 128 + 64);
constexpr uint64_t LOWER_BY_LANES = shift_bits(1, LANES * 128);

// A block as one polynomial: the first word on top.
[[gnu::target("pclmul,ssse3")]] inline __m128i load_block(const uint16_t* words) {
    const __m128i reverse_words = _mm_set_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(words)), reverse_words);
}

// A polynomial congruent to `value` followed by as many zero bits as `powers` stands for: its upper half multiplied
// with the upper power, its lower half with the lower one.
[[gnu::target("pclmul,ssse3")]] inline __m128i fold(__m128i value, __m128i powers) {
    return _mm_xor_si128(_mm_clmulepi64_si128(value, powers, 0x11), _mm_clmulepi64_si128(value, powers, 0x00));
}

[[gnu::target("pclmul,ssse3")]] inline __m128i two_halves(uint64_t upper, uint64_t lower) {
    return _mm_set_epi64x(static_cast<int64_t>(upper), static_cast<int64_t>(lower));
}

// Folds all whole blocks of `words` into one block that leaves the same register, and drops them from `words`, which
// holds at least one.
[[gnu::target("pclmul,ssse3")]] __m128i fold_blocks(uint16_t crc, std::span<const uint16_t>& words) {
    const __m128i by_1 = two_halves(UPPER_BY_1, LOWER_BY_1);
    const uint16_t* next = words.data();
    size_t blocks = words.size() / BLOCK_WORDS;
    words = words.subspan(blocks * BLOCK_WORDS);
    __m128i value = _mm_xor_si128(load_block(next), two_halves(static_cast<uint64_t>(crc) << 48, 0));
    next += BLOCK_WORDS;
    --blocks;
    if (blocks >= LANES - 1) {
        const __m128i by_lanes = two_halves(UPPER_BY_LANES, LOWER_BY_LANES);
        __m128i lane[LANES] = {value, load_block(next), load_block(next + BLOCK_WORDS),
                               load_block(next + 2 * BLOCK_WORDS)};
        next += (LANES - 1) * BLOCK_WORDS;
        blocks -= LANES - 1;
        for (; blocks >= LANES; blocks -= LANES) {
            for (size_t i = 0; i < LANES; ++i)
                lane[i] = _mm_xor_si128(fold(lane[i], by_lanes), load_block(next + i * BLOCK_WORDS));
            next += LANES * BLOCK_WORDS;
        }
        value = lane[0];
        for (size_t i = 1; i < LANES; ++i) value = _mm_xor_si128(fold(value, by_1), lane[i]);
    }
    for (; blocks > 0; --blocks) {
        value = _mm_xor_si128(fold(value, by_1), load_block(next));
        next += BLOCK_WORDS;
    }
    return value;
}

[[gnu::target("pclmul,ssse3")]] uint16_t crc16_folded(uint16_t crc, std::span<const uint16_t> words) {
    alignas(16) std::array<uint16_t, BLOCK_WORDS> block;
    // The folded block starts from the register 0: the one given is part of it. Its words lie last word first.
    _mm_store_si128(reinterpret_cast<__m128i*>(block.data()), fold_blocks(crc, words));
    std::array<uint16_t, BLOCK_WORDS> in_order;
    for (size_t i = 0; i < BLOCK_WORDS; ++i) in_order[i] = block[BLOCK_WORDS - 1 - i];
    return crc16_table(crc16_slicing(0, in_order), words);
}

}  // namespace

bool crc16_clmul_available() {
    static const bool available = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
    return available;
}

uint16_t crc16_clmul(uint16_t crc, std::span<const uint16_t> words) {
    if (words.size() < 2 * BLOCK_WORDS || !crc16_clmul_available()) return crc16_slicing(crc, words);
    return crc16_folded(crc, words);
}

#else

bool crc16_clmul_available() {
    return false;
}

uint16_t crc16_clmul(uint16_t crc, std::span<const uint16_t> words) {
    return crc16_slicing(crc, words);
}

#endif

uint16_t crc16(uint16_t crc, std::span<const uint16_t> words) {
    return crc16_clmul(crc, words);
}
