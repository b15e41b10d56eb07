#pragma once

#include <string>

namespace zellick::fake {

// A number as event lines and the state dump print it: at most three decimals, trailing
// zeros and a trailing dot dropped, negative zero as "0" (199.3, -810.7, 0.15, 2).
std::string formatNumber(double v);

}  // namespace zellick::fake
