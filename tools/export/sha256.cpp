#include "export/sha256.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "io/fatal.hpp"

namespace exporting {

namespace {

constexpr std::size_t block_size = 64;

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> round_constants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

// The state begins with the first 32 bits of the fractional parts of the square roots of the first
// eight primes.
struct Digest {
  std::array<std::uint32_t, 8> state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                        0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::uint64_t bytes = 0;  // of the whole blocks taken in so far
};

std::array<std::uint32_t, 64> message_schedule(const char* block) {
  std::array<std::uint32_t, 64> w{};
  for (std::size_t i = 0; i < block_size; ++i) {
    w[i / 4] = w[i / 4] << 8 | static_cast<unsigned char>(block[i]);
  }
  for (std::size_t t = 16; t < 64; ++t) {
    const std::uint32_t s0 = std::rotr(w[t - 15], 7) ^ std::rotr(w[t - 15], 18) ^ w[t - 15] >> 3;
    const std::uint32_t s1 = std::rotr(w[t - 2], 17) ^ std::rotr(w[t - 2], 19) ^ w[t - 2] >> 10;
    w[t] = w[t - 16] + s0 + w[t - 7] + s1;
  }
  return w;
}

void take_in_block(Digest& digest, const char* block) {
  const std::array<std::uint32_t, 64> w = message_schedule(block);
  auto [a, b, c, d, e, f, g, h] = digest.state;
  for (std::size_t t = 0; t < 64; ++t) {
    const std::uint32_t sum1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t t1 = h + sum1 + ((e & f) ^ (~e & g)) + round_constants[t] + w[t];
    const std::uint32_t sum0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const std::uint32_t t2 = sum0 + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + t1;
    d = c;
    c = b;
    b = a;
    a = t1 + t2;
  }
  const std::array<std::uint32_t, 8> change = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < change.size(); ++i) digest.state[i] += change[i];
  digest.bytes += block_size;
}

// Takes in the whole blocks of the text; the result is what is left behind them.
std::string_view take_in(Digest& digest, std::string_view text) {
  for (; text.size() >= block_size; text.remove_prefix(block_size)) {
    take_in_block(digest, text.data());
  }
  return text;
}

// Pads the last bytes with a one, zeros and the length in bits, and spells the digest.
std::string finish(Digest digest, std::string_view rest) {
  const std::uint64_t bits = (digest.bytes + rest.size()) * 8;
  std::string tail(rest);
  tail += '\x80';
  while (tail.size() % block_size != block_size - 8) tail += '\0';
  for (int shift = 56; shift >= 0; shift -= 8) tail += static_cast<char>(bits >> shift & 0xff);
  take_in(digest, tail);
  std::string text;
  for (const std::uint32_t word : digest.state) {
    for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[word >> shift & 0xf];
  }
  return text;
}

}  // namespace

std::string sha256_of_text(std::string_view text) {
  Digest digest;
  const std::string_view rest = take_in(digest, text);
  return finish(digest, rest);
}

std::string sha256_of_file(const std::string& name) {
  std::error_code unreadable;
  if (std::filesystem::is_other(name, unreadable)) {
    // What has been read from it is gone.
    io::fatal_stop({name}, "expected a regular file for its checksum, found a pipe or a device");
  }
  std::ifstream file(name, std::ios::binary);
  std::vector<char> buffer(1024 * block_size);
  Digest digest;
  while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
    take_in(digest, {buffer.data(), buffer.size()});
  }
  if (!file.eof()) io::fatal_stop({name}, "expected a file that can be read to its end");
  const std::string_view last(buffer.data(), static_cast<std::size_t>(file.gcount()));
  return finish(digest, take_in(digest, last));
}

}  // namespace exporting
