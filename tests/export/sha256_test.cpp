#include "export/sha256.hpp"

#include <gtest/gtest.h>

#include "support/support.hpp"

namespace {

// Digests of the standard's examples, and of lengths at which the padding begins a new block or the
// file a new buffer, as other programs give them.
TEST(Sha256, gives_known_digests_of_texts_and_files) {
  struct Known {
    std::string text;
    const char* digest;
  };
  const Known known[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(65536, 'a'), "bf718b6f653bebc184e1479f1935b8da974d701b893afcf49e701f3e2f9f9c5a"},
      {std::string(1000000, 'a'),
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  const support::TempFolder folder;
  for (const Known& entry : known) {
    EXPECT_EQ(exporting::sha256_of_text(entry.text), entry.digest) << entry.text.size();
    support::write_file("file", entry.text);
    EXPECT_EQ(exporting::sha256_of_file("file"), entry.digest) << entry.text.size();
  }
  EXPECT_TRUE(support::stops(2, "missing:0: expected a file that can be read to its end",
                             [] { exporting::sha256_of_file("missing"); }));
  EXPECT_TRUE(support::stops(2, ".:0: expected a file", [] { exporting::sha256_of_file("."); }));
}

}  // namespace
