// The rule lists that matrix files are loaded beside, and that seeds for them are made from.
#pragma once

#include <string>

namespace lexon::fuzz {

inline constexpr int kMatrixRuleLists = 4;

// The text of a list; every number gives one.
[[nodiscard]] inline std::string matrix_rules(unsigned number) {
  constexpr int kLengths[kMatrixRuleLists] = {0, 1, 9, 70};
  static const char* const kRules[] = {
      "R{N,A:::}{V:::}P9;\n",  "R{^N,A:::}{^V,@x:::}P8;\n", ":{N:::}\"V,^B:::\"P7;\n",
      "L{:::}{A,B,C:::}P5;\n", "?{\"A\":::}{N:::}P5;\n",
  };
  std::string text;
  for (int i = 0; i < kLengths[number % kMatrixRuleLists]; ++i) text += kRules[static_cast<std::size_t>(i) % 5];
  return text;
}

}  // namespace lexon::fuzz
