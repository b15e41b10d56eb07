#include <iostream>

#include "sim/driver.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  return zellick::sim::runZellickSim(args, std::cin, std::cout, std::cerr);
}
