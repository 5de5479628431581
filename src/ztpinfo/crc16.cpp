#include "ztpinfo/crc16.h"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace quorlin {

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

// What word `Index` of a sliced step adds to the register after the step.
template <uint32_t Index>
uint32_t word_share(uint16_t word) {
    constexpr uint32_t LOW_SLICE = SLICES - 2 - 2 * Index;
    return static_cast<uint32_t>(TABLES[LOW_SLICE + 1][word >> 8] ^ TABLES[LOW_SLICE][word & 0xFF]);
}

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
        // The register stands over the first word of the step; every byte then counts with the zero bytes after it.
        const uint16_t first = static_cast<uint16_t>(words[0] ^ crc);
        crc = static_cast<uint16_t>(word_share<0>(first) ^ word_share<1>(words[1]) ^ word_share<2>(words[2]) ^
                                    word_share<3>(words[3]) ^ word_share<4>(words[4]) ^ word_share<5>(words[5]) ^
                                    word_share<6>(words[6]) ^ word_share<7>(words[7]));
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

[[gnu::target("pclmul,ssse3")]] inline __m128i reverse_words(__m128i words) {
    return _mm_shuffle_epi8(words, _mm_set_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14));
}

// A block as one polynomial: the first word on top.
[[gnu::target("pclmul,ssse3")]] inline __m128i load_block(const uint16_t* words) {
    return reverse_words(_mm_loadu_si128(reinterpret_cast<const __m128i*>(words)));
}

[[gnu::target("pclmul,ssse3")]] inline void store_block(std::array<uint16_t, BLOCK_WORDS>& words, __m128i block) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(words.data()), reverse_words(block));
}

// A polynomial congruent to `value` followed by as many zero bits as `powers` stands for: its upper half multiplied
// with the upper power, its lower half with the lower one.
[[gnu::target("pclmul,ssse3")]] inline __m128i fold(__m128i value, __m128i powers) {
    return _mm_xor_si128(_mm_clmulepi64_si128(value, powers, 0x11), _mm_clmulepi64_si128(value, powers, 0x00));
}

[[gnu::target("pclmul,ssse3")]] inline __m128i two_halves(uint64_t upper, uint64_t lower) {
    return _mm_set_epi64x(static_cast<int64_t>(upper), static_cast<int64_t>(lower));
}

// The first, possibly short block of `words`, filled up with zero words before it: they leave the register 0 as it is.
// `crc` goes into the first word. Drops the block from `words`, which is not empty.
[[gnu::target("pclmul,ssse3")]] __m128i take_first_block(uint16_t crc, std::span<const uint16_t>& words) {
    const size_t taken = (words.size() - 1) % BLOCK_WORDS + 1;
    alignas(16) std::array<uint16_t, BLOCK_WORDS> block{};
    uint16_t* const first = block.data() + (BLOCK_WORDS - taken);
    std::memcpy(first, words.data(), taken * sizeof *first);
    *first = static_cast<uint16_t>(*first ^ crc);
    words = words.subspan(taken);
    return load_block(block.data());
}

// A block that leaves the same register as `words` do from the register `crc`.
[[gnu::target("pclmul,ssse3")]] __m128i fold_blocks(uint16_t crc, std::span<const uint16_t> words) {
    const __m128i by_1 = two_halves(UPPER_BY_1, LOWER_BY_1);
    __m128i value = take_first_block(crc, words);
    size_t blocks = words.size() / BLOCK_WORDS;
    const uint16_t* next = words.data();
    if (blocks >= LANES - 1) {
        __m128i lane1 = load_block(next);
        __m128i lane2 = load_block(next + BLOCK_WORDS);
        __m128i lane3 = load_block(next + 2 * BLOCK_WORDS);
        const __m128i by_lanes = two_halves(UPPER_BY_LANES, LOWER_BY_LANES);
        next += (LANES - 1) * BLOCK_WORDS;
        blocks -= LANES - 1;
        for (; blocks >= LANES; blocks -= LANES) {
            value = _mm_xor_si128(fold(value, by_lanes), load_block(next));
            lane1 = _mm_xor_si128(fold(lane1, by_lanes), load_block(next + BLOCK_WORDS));
            lane2 = _mm_xor_si128(fold(lane2, by_lanes), load_block(next + 2 * BLOCK_WORDS));
            lane3 = _mm_xor_si128(fold(lane3, by_lanes), load_block(next + 3 * BLOCK_WORDS));
            next += LANES * BLOCK_WORDS;
        }
        value = _mm_xor_si128(fold(value, by_1), lane1);
        value = _mm_xor_si128(fold(value, by_1), lane2);
        value = _mm_xor_si128(fold(value, by_1), lane3);
    }
    for (; blocks > 0; --blocks) {
        value = _mm_xor_si128(fold(value, by_1), load_block(next));
        next += BLOCK_WORDS;
    }
    return value;
}

[[gnu::target("pclmul,ssse3")]] uint16_t crc16_folded(uint16_t crc, std::span<const uint16_t> words) {
    std::array<uint16_t, BLOCK_WORDS> block;
    store_block(block, fold_blocks(crc, words));
    return crc16_slicing(0, block);
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

}  // namespace quorlin
