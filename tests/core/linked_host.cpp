// A program that is linked with -ltavok. It names the library's variables, so that the linker moves
// them into its own data, and forks while it holds the lock.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <mutex>

#include "sve/state/cpu_state.h"

extern "C" {
aarch64_decode_rc execute_sve_instruction(cpu_state* state);
extern std::atomic<uint64_t> sve_instr_count;
extern std::mutex icounts_mutex;
}

namespace {

int add_one_and_two() {
  const uint32_t code = 0x04620020;  // ADD Z0.H, Z1.H, Z2.H
  cpu_state state = {};
  state.pc = reinterpret_cast<uint64_t>(&code);
  state.z[1][0] = 1;
  state.z[2][0] = 2;
  return execute_sve_instruction(&state) == aarch64_decode_ok ? state.z[0][0] : -1;
}

}  // namespace

int main() {
  icounts_mutex.lock();
  const pid_t child = fork();
  icounts_mutex.unlock();
  const bool right = add_one_and_two() == 3 && add_one_and_two() == 3 && sve_instr_count == 2;
  if (child == 0)
    _exit(right ? 0 : 1);
  int status = 1;
  waitpid(child, &status, 0);
  printf("%s, child's status %d\n", right ? "right" : "wrong", status);
  return right ? status : 1;
}
