// Reads that may fail, and what happens to all other faults.
#include "sve/client/sve_utils.h"
#include "sve/state/guarded_reads.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "sve/state/switches.h"
#include "tests/core/child_process.h"

namespace {

const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));

const std::string segv_message = "tavok's SVESigHandler caught signal SIGSEGV from the process "
                                 "being emulated, passing it to the default signal handler.\n";
const std::string bus_message = "tavok's SVESigHandler caught signal SIGBUS from the process "
                                "being emulated, passing it to the default signal handler.\n";

// A readable page between unreadable ones.
struct Pages {
  char* const mapping =
      static_cast<char*>(mmap(nullptr, 3 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  char* const memory = mapping + page;
  char* const end = memory + page;
  Pages() {
    mprotect(memory, page, PROT_READ | PROT_WRITE);
    for (size_t i = 0; i < page; i++)
      memory[i] = static_cast<char>(i * 7 + 1);
  }
  ~Pages() { munmap(mapping, 3 * page); }
  // The address from which this many bytes can be read.
  uint64_t before_end(size_t bytes) const { return reinterpret_cast<uint64_t>(end - bytes); }
};

// A page of a mapped file behind the end of the file: an access raises SIGBUS.
char* page_behind_file() {
  FILE* const file = tmpfile();
  void* const memory = mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_SHARED, fileno(file), 0);
  fclose(file);
  return static_cast<char*>(memory);
}

// The kernel's core files would only cost time.
void without_core_file() {
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
}

struct sigaction action_in_force(int signal) {
  struct sigaction action;
  sigaction(signal, nullptr, &action);
  return action;
}

bool operator==(const struct sigaction& a, const struct sigaction& b) {
  return a.sa_sigaction == b.sa_sigaction && a.sa_flags == b.sa_flags &&
         memcmp(&a.sa_mask, &b.sa_mask, sizeof(long)) == 0;
}

// A handler of an embedding program: returns to where its thread waits for a fault.
thread_local sigjmp_buf own_return;
thread_local int own_faults;

void own_handler(int) {
  own_faults = own_faults + 1;
  siglongjmp(own_return, 1);
}

struct OwnHandler {
  int signal;
  struct sigaction before;
  explicit OwnHandler(int of = SIGSEGV) : signal(of) {
    struct sigaction action = {};
    action.sa_handler = own_handler;
    action.sa_flags = SA_NODEFER;
    sigaddset(&action.sa_mask, SIGUSR2);
    sigaction(signal, &action, &before);
  }
  ~OwnHandler() { sigaction(signal, &before, nullptr); }
};

__attribute__((noinline)) bool fault_on_own_handler(volatile char* address) {
  const int before = own_faults;
  if (sigsetjmp(own_return, 1) == 0)
    *address = 1;
  return own_faults == before + 1;
}

TEST(Handler, IsInstalledOnce) {
  for (const int signal : {SIGSEGV, SIGBUS}) {
    const struct sigaction action = action_in_force(signal);
    EXPECT_EQ(action.sa_sigaction, SVESigHandler);
    EXPECT_EQ(action.sa_flags & 0x50000004, 0x50000004);
    for (int other = 1; other < SIGRTMIN; other++)
      EXPECT_EQ(sigismember(&action.sa_mask, other), 0) << other;
  }
  EXPECT_EQ(SVELibInitialized, 1);
  const OwnHandler own;
  const struct sigaction before = action_in_force(SIGSEGV);
  EXPECT_EQ(SVEInitialize(), 1);
  EXPECT_TRUE(action_in_force(SIGSEGV) == before);
}

TEST(Handler, GivesTheApplicationsFaultToTheDefaultAction) {
  const Pages pages;
  const child_result store = run_in_child([&] {
    without_core_file();
    *const_cast<volatile char*>(pages.end) = 1;
  });
  EXPECT_TRUE(store.killed_by(SIGSEGV)) << store.status;
  EXPECT_EQ(store.count(segv_message), 1) << store.errors;

  const child_result read = run_in_child([] {
    without_core_file();
    [[maybe_unused]] const char byte = *const_cast<volatile char*>(page_behind_file());
  });
  EXPECT_TRUE(read.killed_by(SIGBUS)) << read.status;
  EXPECT_EQ(read.count(bus_message), 1) << read.errors;
}

TEST(Probe, TellsWhatCanBeRead) {
  const Pages pages;
  const auto readable = [](char* address) { return addr_is_readable<char>(address); };
  const auto check = [&] {
    for (int signal : {SIGSEGV, SIGBUS}) {
      const struct sigaction before = action_in_force(signal);
      EXPECT_TRUE(readable(pages.memory));
      EXPECT_TRUE(readable(pages.end - 1));
      EXPECT_FALSE(readable(pages.end));
      EXPECT_FALSE(readable(pages.end + page - 1));
      EXPECT_FALSE(readable(nullptr));
      EXPECT_FALSE(readable(reinterpret_cast<char*>(1)));
      EXPECT_TRUE(readable(pages.end - 8));
      EXPECT_TRUE(action_in_force(signal) == before);
    }
  };
  check();
  const OwnHandler own;
  own_faults = 0;
  errno = ENOENT;
  check();
  EXPECT_EQ(own_faults, 0);
  EXPECT_EQ(errno, ENOENT);
}

TEST(Probe, LeavesASignalThatWasSentToTheHandler) {
  const child_result result = run_in_child([] {
    without_core_file();
    const Pages pages;
    EXPECT_FALSE(addr_is_readable<char>(pages.end));
    raise(SIGSEGV);  // prints the message and puts the default action back
    raise(SIGSEGV);
  });
  EXPECT_TRUE(result.killed_by(SIGSEGV)) << result.status;
  EXPECT_EQ(result.count(segv_message), 1) << result.errors;
}

TEST(Probe, TakesABusErrorOnlyAsTheHardwareHasIt) {
  const child_result result = run_in_child([] {
    without_core_file();
    sve_faults_as_hardware = true;
    EXPECT_FALSE(addr_is_readable<char>(page_behind_file()));
    if (!TEST_SIMULATED) {  // the simulator's kernel is itself, and would die of such a read
      const OwnHandler own(SIGBUS);
      EXPECT_FALSE(addr_is_readable<char>(page_behind_file()));
    }
    sve_faults_as_hardware = false;
    fputs(own_faults == 0 && !testing::Test::HasFailure() ? "as the hardware\n" : "wrong\n",
          stderr);
    addr_is_readable<char>(page_behind_file());
  });
  EXPECT_TRUE(result.killed_by(SIGBUS)) << result.status;
  EXPECT_EQ(result.errors.substr(0, result.errors.rfind("tavok")), "as the hardware\n");
  EXPECT_EQ(result.count(bus_message), 1) << result.errors;
}

template <class T> void expect_guarded_reads(const Pages& pages) {
  bool fault = false;
  for (size_t back = sizeof(T); back < sizeof(T) + 9; back++) {
    T expected;
    memcpy(&expected, pages.end - back, sizeof expected);
    EXPECT_EQ(guarded_read<T>(pages.before_end(back), &fault), expected) << back;
    EXPECT_EQ(guarded_read<T>(pages.before_end(back), nullptr), expected) << back;
    EXPECT_FALSE(fault);
  }
  for (size_t back = 0; back < sizeof(T); back++) {  // the last byte, or all, behind the end
    fault = false;
    EXPECT_EQ(guarded_read<T>(pages.before_end(back), &fault), 0) << back;
    EXPECT_TRUE(fault) << back;
    EXPECT_EQ(SVEFaultRegion, 0);
  }
  fault = false;
  EXPECT_EQ(guarded_read<T>(reinterpret_cast<uint64_t>(pages.memory - 1), &fault), 0);
  EXPECT_TRUE(fault) << "the first byte alone in front of the page";
}

TEST(GuardedRead, ReadsOrTellsAFault) {
  const Pages pages;
  expect_guarded_reads<uint8_t>(pages);
  expect_guarded_reads<uint16_t>(pages);
  expect_guarded_reads<uint32_t>(pages);
  expect_guarded_reads<uint64_t>(pages);
  bool fault = true;
  EXPECT_EQ(guarded_read<uint8_t>(pages.before_end(1), &fault),
            static_cast<uint8_t>(pages.end[-1]));
  EXPECT_TRUE(fault);  // never cleared
}

TEST(GuardedRead, KeepsTheSignalMask) {
  const Pages pages;
  sigset_t blocked, before, after;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  bool fault = false;
  guarded_read<uint32_t>(pages.before_end(0), &fault);
  EXPECT_TRUE(fault);
  pthread_sigmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(sigismember(&after, SIGUSR1), 1);
  EXPECT_EQ(sigismember(&after, SIGSEGV), 0);
}

TEST(GuardedRead, WithoutAFlagMeetsTheHandler) {
  const child_result result = run_in_child([] {
    without_core_file();
    const Pages pages;
    guarded_read<uint64_t>(pages.before_end(0), nullptr);
  });
  EXPECT_TRUE(result.killed_by(SIGSEGV)) << result.status;
  EXPECT_EQ(result.count(segv_message), 1) << result.errors;
}

constexpr int reads = 1'000'000 / TEST_SLOWDOWN;

// Two threads probe while a third one takes real faults on a handler of its own.
TEST(Threads, ProbesDoNotDisturbAnotherThreadsFaults) {
  const Pages pages;
  const OwnHandler own;
  const struct sigaction before = action_in_force(SIGSEGV);
  std::atomic<int> wrong = 0, probing = 2;
  const auto probe = [&] {
    for (int i = 0; i < reads / 2; i++) {
      char* const address = i % 2 != 0 ? pages.end : pages.end - 1;
      wrong += addr_is_readable<char>(address) != (i % 2 == 0);
    }
    probing--;
  };
  int faults = 0, lost = 0;
  std::thread first(probe), second(probe), third([&] {
    while (probing != 0) {
      faults++;
      lost += !fault_on_own_handler(pages.end);
    }
  });
  first.join();
  second.join();
  third.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(lost, 0);
  EXPECT_GT(faults, 0);
  EXPECT_TRUE(action_in_force(SIGSEGV) == before);
  printf("%d probes beside %d faults\n", reads, faults);
}

// Probes that fault, guarded reads that fault and such that do not, all on SVESigHandler.
TEST(Threads, ReadsDoNotDisturbEachOther) {
  const Pages pages;
  const struct sigaction before = action_in_force(SIGSEGV);
  std::atomic<int> wrong = 0;
  const auto probe = [&] {
    for (int i = 0; i < reads / 4; i++)
      wrong += addr_is_readable<char>(i % 2 != 0 ? pages.end : pages.end - 1) != (i % 2 == 0);
  };
  const auto guard = [&] {
    uint32_t expected;
    memcpy(&expected, pages.end - sizeof expected, sizeof expected);
    for (int i = 0; i < reads / 4; i++) {
      bool fault = false;
      const uint32_t value = guarded_read<uint32_t>(pages.before_end(i % 2 != 0 ? 3 : 4), &fault);
      wrong += fault != (i % 2 != 0) || value != (fault ? 0 : expected);
    }
  };
  std::thread threads[] = {std::thread(probe), std::thread(probe), std::thread(guard),
                           std::thread(guard)};
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_TRUE(action_in_force(SIGSEGV) == before);
}

}  // namespace
