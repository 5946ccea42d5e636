// Vector loops on many threads at once: each thread has registers, predicates and a first-fault
// register of its own. Threads meet at a barrier, share a sum under a mutex, and come and go.
#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

#include "kernels.h"

namespace {

constexpr int threads = 6, rounds = 12, elements = 117;

std::mutex mutex;
uint64_t shared_sum;
std::atomic<uint64_t> atomic_sum;
thread_local uint64_t own_sum;

// All integer arithmetic, so that the order of the threads does not show.
[[gnu::noipa]] uint64_t kernel(uint32_t* values, int n, uint32_t seed) {
  for (int i = 0; i < n; i++)
    values[i] = values[i] * 1664525u + seed + i;
  uint64_t sum = 0;
  for (int i = 0; i < n; i++)
    if (values[i] & 4)
      sum += values[i] >> (i & 7);
  return sum;
}

void work(int number, uint64_t* result, pthread_barrier_t* barrier) {
  std::vector<uint32_t> values(elements);
  std::iota(values.begin(), values.end(), number * 1000);
  for (int round = 0; round < rounds; round++) {
    pthread_barrier_wait(barrier);
    const uint64_t sum = kernel(values.data(), elements - number, round);
    own_sum = own_sum * 31 + sum;
    atomic_sum += sum;
    const std::lock_guard<std::mutex> lock(mutex);
    shared_sum += sum;
  }
  *result = own_sum;
}

}  // namespace

int main() {
  pthread_barrier_t barrier;
  pthread_barrier_init(&barrier, nullptr, threads);
  uint64_t results[threads];
  std::vector<std::thread> team;
  for (int i = 0; i < threads; i++)
    team.emplace_back(work, i, &results[i], &barrier);
  for (std::thread& thread : team)
    thread.join();
  for (int i = 0; i < threads; i++)
    printf("thread %d: %016llx\n", i, static_cast<unsigned long long>(results[i]));
  printf("shared %016llx, atomic %016llx, main's own %llu\n",
         static_cast<unsigned long long>(shared_sum),
         static_cast<unsigned long long>(atomic_sum.load()),
         static_cast<unsigned long long>(own_sum));

  uint64_t sum = 0;
  for (int i = 0; i < 40; i++)
    std::thread([i, &sum] {
      std::vector<uint32_t> values(elements, i);
      sum += kernel(values.data(), elements, i);
    }).join();
  printf("one after the other: %016llx\n", static_cast<unsigned long long>(sum));
}
