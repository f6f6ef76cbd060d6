// The bits of an index as its file holds them, row by row.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "rules/compiled.hpp"
#include "support/grammar.hpp"

namespace lexon::test {

struct SavedMatrix {
  struct Side {
    std::vector<std::uint8_t> pos;
    std::vector<std::uint8_t> neg;
  };
  Side left;
  Side right;
};

// What the file of the present index holds behind its header and its names.
[[nodiscard]] inline SavedMatrix saved_matrix() {
  constexpr long kHeaderSize = 32;
  const RuleMatrix& matrix = grammar.index.matrix;
  SavedMatrix saved;
  std::FILE* stream = std::tmpfile();
  static_cast<void>(rule_matrix_save(session, grammar.index, stream));
  std::fseek(stream, kHeaderSize + static_cast<long>(matrix.left.pool_size) + static_cast<long>(matrix.right.pool_size), SEEK_SET);
  const auto take = [stream](std::vector<std::uint8_t>& bytes, std::uint32_t size) {
    bytes.resize(size);
    bytes.resize(std::fread(bytes.data(), 1, size, stream));
  };
  take(saved.left.pos, matrix.left.matrix_size);
  take(saved.left.neg, matrix.left.matrix_size);
  take(saved.right.pos, matrix.right.matrix_size);
  take(saved.right.neg, matrix.right.matrix_size);
  std::fclose(stream);
  return saved;
}

}  // namespace lexon::test
