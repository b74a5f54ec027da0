// A minimal application linking the installed library.
#include <iostream>

#include "quorvel/platform/run_loop.h"
#include "velmaro/version.h"

int main() {
  quorvel::platform::RunLoop loop;
  bool answered = false;
  loop.post([&] { answered = true; });
  loop.runUntil([&] { return answered; }, std::chrono::seconds(1));
  std::cout << "velmaro " << velmaro::buildVersion() << (answered ? " ok" : " stuck") << "\n";
  return answered ? 0 : 1;
}
