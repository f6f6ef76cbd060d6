// What the tests of a program work with.
#pragma once

#include "data/session.hpp"

namespace lexon::test {

inline Session session;

}  // namespace lexon::test
