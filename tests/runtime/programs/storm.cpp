// Three threads compute the same over and over while signals rain on them: any register that a
// signal loses shows in a result.
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

constexpr int kSeeds = 8;
constexpr int kEnoughSignals = 400;
constexpr int kEnoughRounds = 20;

static std::atomic<int> signals;

// Uses registers of its own in every way that the compiler does not expect.
static void on_signal(int) {
  ++signals;
  asm volatile("movi v0.16b, #1\n movi v7.16b, #3\n movi v20.16b, #9\n mov x28, #0\n"
               "mov x26, #1\n mov x27, #2\n cmp xzr, xzr" ::
                   : "v0", "v7", "v20", "x26", "x27", "x28", "cc");
}

// Direct, indirect and computed control, doubles, the marker of the test's client.
static unsigned long compute(unsigned seed) {
  const std::function<unsigned long(unsigned long)> steps[] = {
      [](unsigned long x) { return x * 31; },
      [](unsigned long x) { return x ^ 0x55; },
      [](unsigned long x) { return x + 7; },
  };
  std::map<std::string, int> counts;
  std::vector<double> values;
  unsigned long hash = 0;
  for (int i = 0; i < 60; ++i) {
    seed = seed * 1103515245 + 12345;
    counts[std::to_string(seed % 97)] += i;
    values.push_back(seed / 3.0);
    register unsigned long x0 asm("x0") = seed;
    asm volatile("hint #100\n sub x0, x0, #1\n hint #100\n add x1, x0, #1\n sub x0, x1, #2"
                 : "+r"(x0)::"x1");
    hash = hash * 33 + x0;
  }
  std::sort(values.begin(), values.end(), [](double a, double b) { return a > b; });
  int next = 0;
  for (const auto& [key, count] : counts) {
    hash = steps[next++ % 3](hash) + static_cast<unsigned long>(count) + key.size();
  }
  for (const double value : values) {
    hash = hash * 33 + static_cast<unsigned long>(value);
  }
  return hash;
}

int main() {
  struct sigaction action = {};
  action.sa_handler = on_signal;
  action.sa_flags = SA_RESTART;
  sigaction(SIGALRM, &action, nullptr);
  sigaction(SIGUSR2, &action, nullptr);
  unsigned long expected[kSeeds];
  for (unsigned i = 0; i < kSeeds; ++i) {
    expected[i] = compute(i);
  }
  const itimerval often = {{0, 500}, {0, 500}}, never = {};
  setitimer(ITIMER_REAL, &often, nullptr);
  std::atomic<int> rounds{0};
  std::atomic<long> wrong{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      while (rounds < kEnoughRounds || signals < kEnoughSignals) {
        for (unsigned seed = 0; seed < kSeeds; ++seed) {
          wrong += compute(seed) != expected[seed];
        }
        ++rounds;
      }
    });
  }
  while (rounds < kEnoughRounds || signals < kEnoughSignals) {
    for (std::thread& thread : threads) {
      pthread_kill(thread.native_handle(), SIGUSR2);
    }
    usleep(300);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  setitimer(ITIMER_REAL, &never, nullptr);
  std::printf("%ld wrong\n", wrong.load());
  return 0;
}
