// Benchmarks whose result is a ratio of two times of one run, since times alone say little across machines.
#pragma once

#include <initializer_list>

namespace lexon::bench {

// `slower` and `faster` are full names of benchmarks, such as "convert/10000". The best repetition of each counts.
struct Ratio {
  const char* what;
  const char* slower;
  const char* faster;
  double at_least = 0.0;  // both 0: nothing is wanted, the ratio is for comparison
  double at_most = 0.0;   // 0: no upper bound
};

// The main function of a benchmark program: runs the benchmarks and then prints each ratio whose two times are known.
int run(int argc, char** argv, std::initializer_list<Ratio> ratios);

}  // namespace lexon::bench
