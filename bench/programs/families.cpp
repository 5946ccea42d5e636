// Runs one family's loop: families <number> <rounds>. Without arguments, lists the families.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

struct Family {
  const char* name;
  void (*loop)(uint64_t rounds, void* buffer);
};

extern "C" {
extern const Family family_loops[];
extern const Family family_loops_end[];
void set_up_families();
}

namespace {

alignas(64) unsigned char buffer[256];

// The loops take and leave vector registers and predicates as no compiler expects it.
[[gnu::noinline]] void run(const Family& family, uint64_t rounds) {
  register uint64_t count asm("x0") = rounds;
  register void* memory asm("x1") = buffer;
  asm volatile("bl set_up_families\n\tblr %[loop]"
               : "+r"(count), "+r"(memory)
               : [loop] "r"(family.loop)
               : "x9", "x10", "x11", "x30", "v0", "v2", "v3", "v4", "v5", "v6", "memory", "cc");
}

}  // namespace

int main(int argc, char** argv) {
  const int count = static_cast<int>(family_loops_end - family_loops);
  if (argc < 3) {
    for (int i = 0; i < count; i++)
      puts(family_loops[i].name);
    return 0;
  }
  const int number = atoi(argv[1]);
  if (number < 0 || number >= count)
    return 2;
  run(family_loops[number], strtoull(argv[2], nullptr, 10));
}
