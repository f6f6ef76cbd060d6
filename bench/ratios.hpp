// Benchmarks whose result is a ratio of two times of one run, since times alone say little across machines.
#pragma once

#include <initializer_list>

namespace lexon::bench {

// `slower` and `faster` are full names of benchmarks, such as "convert/10000". The best repetition of each counts.
struct Ratio {
  const char* what;
  const char* slower;
  const char* faster;
  const char* wanted;  // for the reader, such as "at most 13"
};

// The main function of a benchmark program: runs the benchmarks and then prints each ratio whose two times are known.
int run(int argc, char** argv, std::initializer_list<Ratio> ratios);

}  // namespace lexon::bench
