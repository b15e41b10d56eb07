// Loaded with LD_PRELOAD: every host-name lookup takes 10 s and finds nothing, as behind a name
// server that does not answer. Nothing leaves the machine.
#include <netdb.h>
#include <unistd.h>

extern "C" int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**) {
  sleep(10);
  return EAI_NONAME;
}
