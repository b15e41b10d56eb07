// The maker's web services on 127.0.0.1, for running the app and its tests without the
// internet. The server itself is services_server.h.
#include <pthread.h>
#include <signal.h>

#include <cstring>
#include <iostream>

#include "services_server.h"

int main(int argc, char** argv) {
  using namespace zellick::standin;
  const ParsedArgs parsed = parseServicesArgs({argv + 1, argv + argc});
  if (parsed.help) {
    std::cout << servicesUsage();
    return 0;
  }
  if (!parsed.status.ok()) {
    std::cerr << "zellick-services: " << parsed.status.message() << "\n" << servicesUsage();
    return 2;
  }
  // Blocked before any thread starts, so every thread inherits the mask and this one alone
  // takes the signal, outside any handler.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  ServicesServer server(parsed.options, &std::cout, &std::cerr);
  if (zellick::Status s = server.start(); !s.ok()) {
    std::cerr << "zellick-services: " << s.toString() << "\n";
    return 1;
  }
  std::cout << "zellick-services listening on " << server.baseUrl() << std::endl;
  for (std::size_t i = 0; i < parsed.options.connect.size(); ++i)
    std::cout << "zellick-services ad network " << (i ? "fallback" : "primary") << " on "
              << server.connectUrl(i) << std::endl;
  int signal = 0;
  sigwait(&stopSignals, &signal);
  server.stop();
  std::cerr << "zellick-services: stopped by " << strsignal(signal) << ", "
            << server.records().size() << " records received" << std::endl;
  return 0;
}
