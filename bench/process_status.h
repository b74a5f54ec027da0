#pragma once

#include <fstream>
#include <string>

namespace velmaro::bench {

// Kilobytes of a "Vm…:" line of /proc/self/status ("VmRSS:", "VmHWM:").
inline long statusKb(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(field, 0) == 0) return std::stol(line.substr(std::string(field).size()));
  }
  return 0;
}

}  // namespace velmaro::bench
