// Unwinding reads the application's own return addresses, and goes through signal frames.
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

static int depth_reached;

__attribute__((noinline)) static int descend(int depth) {
  std::string local(static_cast<size_t>(depth + 1), 'x');
  if (depth == 0) {
    throw std::runtime_error("bottom");
  }
  const int result = descend(depth - 1) + static_cast<int>(local.size());
  depth_reached = depth;
  return result;
}

static void from_handler(int signal) { throw signal; }

__attribute__((noinline)) static void fault() { *reinterpret_cast<volatile int*>(8) = 1; }

int main() {
  for (int i = 0; i < 20; ++i) {
    try {
      descend(i);
    } catch (const std::exception& error) {
      std::printf("%d: %s, depth %d\n", i, error.what(), depth_reached);
    }
  }
  std::signal(SIGSEGV, from_handler);
  try {
    fault();
  } catch (int signal) {
    std::printf("thrown out of the handler of %d\n", signal);
  }
  try {
    std::vector<int>().at(3);
  } catch (const std::out_of_range&) {
    std::printf("out of range\n");
  }
  return 0;
}
