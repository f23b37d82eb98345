// The checksum's byte table. The values are part of the file format: every client must
// compute the same sum.
#include "store/checksum.h"

#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace qm {

namespace {
constexpr std::uint16_t kTable[256] = {
    0x0001, 0x0004, 0x1021, 0xF426, 0x0401, 0xC648, 0x2E61, 0x074A, 0x8001, 0xDE0C, 0x96A1, 0x266E,
    0xCC01, 0x4050, 0x44E1, 0x8E92, 0x0001, 0x2614, 0xE521, 0xACB6, 0xD401, 0xE858, 0xB361, 0xFDDA,
    0x8001, 0xE01C, 0x5BA1, 0xEEFE, 0x9C01, 0x4660, 0xD9E1, 0xBD22, 0x0001, 0x1424, 0x5A21, 0x5546,
    0xA401, 0xE268, 0x1861, 0x346A, 0x8001, 0xCA2C, 0x40A1, 0x478E, 0x6C01, 0x4470, 0xCEE1, 0xCBB2,
    0x0001, 0x0A34, 0x6F21, 0x2DD6, 0x7401, 0xF478, 0x5D61, 0xEAFA, 0x8001, 0xDC3C, 0x45A1, 0x701E,
    0x3C01, 0x7A80, 0x23E1, 0xFA42, 0x0001, 0x4844, 0x2421, 0x7666, 0x4401, 0x5E88, 0x8261, 0x618A,
    0x8001, 0x564C, 0x6AA1, 0xA8AE, 0x0C01, 0x2890, 0xD8E1, 0x88D2, 0x0001, 0x0E54, 0x7921, 0x6EF6,
    0x1401, 0x6098, 0x8761, 0xD81A, 0x8001, 0x785C, 0xAFA1, 0x313E, 0xDC01, 0x8EA0, 0xEDE1, 0xB762,
    0x0001, 0x9C64, 0x6E21, 0x5786, 0xE401, 0x3AA8, 0x6C61, 0x8EAA, 0x8001, 0x826C, 0x14A1, 0x49CE,
    0xAC01, 0xECB0, 0x62E1, 0xC5F2, 0x0001, 0x3274, 0x0321, 0x7016, 0xB401, 0x2CB8, 0x3161, 0xC53A,
    0x8001, 0xB47C, 0x99A1, 0x325E, 0x7C01, 0x82C0, 0x37E1, 0xF482, 0x0001, 0x1084, 0x3821, 0xF8A6,
    0x8401, 0x76C8, 0xD661, 0xBBCA, 0x8001, 0x4E8C, 0x3EA1, 0x2AEE, 0x4C01, 0x90D0, 0x6CE1, 0x8312,
    0x0001, 0x7694, 0x0D21, 0x3136, 0x5401, 0x58D8, 0x5B61, 0xB25A, 0x8001, 0x909C, 0x03A1, 0x737E,
    0x1C01, 0x56E0, 0x01E1, 0xB1A2, 0x0001, 0xA4A4, 0x8221, 0x59C6, 0x2401, 0x12E8, 0xC061, 0xE8EA,
    0x8001, 0xBAAC, 0xE8A1, 0x4C0E, 0xEC01, 0x14F0, 0xF6E1, 0xC032, 0x0001, 0xDAB4, 0x9721, 0xB256,
    0xF401, 0xE4F8, 0x0561, 0x9F7A, 0x8001, 0x0CBC, 0xEDA1, 0xF49E, 0xBC01, 0x0B00, 0x4BE1, 0xEEC2,
    0x0001, 0x58C4, 0x4C21, 0x7AE6, 0xC401, 0x0F08, 0x2A61, 0x160A, 0x8001, 0xC6CC, 0x12A1, 0xAD2E,
    0x8C01, 0x7910, 0x00E1, 0x7D52, 0x0001, 0x5ED4, 0xA121, 0xF376, 0x9401, 0xD118, 0x2F61, 0x8C9A,
    0x8001, 0x28DC, 0x57A1, 0xB5BE, 0x5C01, 0x9F20, 0x15E1, 0xABE2, 0x0001, 0x2CE4, 0x9621, 0x5C06,
    0x6401, 0x6B28, 0x1461, 0x432A, 0x8001, 0x72EC, 0xBCA1, 0x4E4E, 0x2C01, 0xBD30, 0x8AE1, 0xBA72,
    0x0001, 0x02F4, 0x2B21, 0xF496, 0x3401, 0x1D38, 0xD961, 0x79BA, 0x8001, 0xE4FC, 0x41A1, 0xB6DE,
    0xFC01, 0x1340, 0x5FE1, 0xE902,
};

// The sums of the table values of every pair of bytes, so the loop takes two bytes a
// lookup. The sum is modulo 65536 either way.
// The sums of the table values of every pair of bytes, so a lookup takes two bytes. The
// entries are 32 bits wide for the vector gather; the sum is modulo 65536 either way.
const std::array<std::uint32_t, 65536>& PairTable() {
  static const std::array<std::uint32_t, 65536> table = [] {
    std::array<std::uint32_t, 65536> t{};
    for (unsigned i = 0; i < 65536; ++i) {
      t[i] = static_cast<std::uint16_t>(kTable[i >> 8] + kTable[i & 0xFF]);
    }
    return t;
  }();
  return table;
}

std::uint32_t TailSum(const std::uint8_t* data, std::size_t n) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < n; ++i) sum += kTable[data[i]];
  return sum;
}

#if defined(__x86_64__)
// Sixteen bytes a step: the eight pairs become eight indexes into the pair table, fetched
// by one gather.
__attribute__((target("avx2"))) std::uint32_t SumAvx2(const std::uint8_t* data, std::size_t n) {
  const auto& pairs = PairTable();
  const __m256i toPairs = _mm256_setr_epi8(1, 0, -1, -1, 3, 2, -1, -1, 5, 4, -1, -1, 7, 6, -1, -1,
                                           1, 0, -1, -1, 3, 2, -1, -1, 5, 4, -1, -1, 7, 6, -1, -1);
  __m256i sums = _mm256_setzero_si256();
  std::size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + i));
    const __m256i halves = _mm256_set_m128i(_mm_srli_si128(bytes, 8), bytes);
    const __m256i indexes = _mm256_shuffle_epi8(halves, toPairs);
    sums = _mm256_add_epi32(
        sums, _mm256_i32gather_epi32(reinterpret_cast<const int*>(pairs.data()), indexes, 4));
  }
  alignas(32) std::uint32_t lanes[8];
  _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), sums);
  std::uint32_t sum = TailSum(data + i, n - i);
  for (std::uint32_t lane : lanes) sum += lane;
  return sum;
}
#endif

}  // namespace

std::uint32_t Checksum::SumPortable(const std::uint8_t* data, std::size_t n) {
  const auto& pairs = PairTable();
  // Four partial sums let the additions run side by side; a 32-bit sum wraps at a
  // multiple of 65536, so nothing is lost.
  std::uint32_t a = 0, b = 0, c = 0, d = 0;
  std::size_t i = 0;
  auto pair = [data](std::size_t at) {
    return static_cast<unsigned>(data[at] << 8 | data[at + 1]);
  };
  for (; i + 8 <= n; i += 8) {
    a += pairs[pair(i)];
    b += pairs[pair(i + 2)];
    c += pairs[pair(i + 4)];
    d += pairs[pair(i + 6)];
  }
  return a + b + c + d + TailSum(data + i, n - i);
}

bool Checksum::HasVectorSum() {
#if defined(__x86_64__)
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return avx2;
#else
  return false;
#endif
}

std::uint32_t Checksum::SumVector(const std::uint8_t* data, std::size_t n) {
#if defined(__x86_64__)
  return SumAvx2(data, n);
#else
  return SumPortable(data, n);
#endif
}

void Checksum::Add(const std::uint8_t* data, std::size_t n) {
  const std::uint32_t sum = HasVectorSum() ? SumVector(data, n) : SumPortable(data, n);
  sum_ = static_cast<std::uint16_t>(sum_ + sum);
}

}  // namespace qm
