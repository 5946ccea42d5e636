// Programs without SVE, to see what a block costs that the client leaves alone:
// ordinary <name> <rounds>. Without arguments, lists the names.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

uint64_t hashing(int rounds) {
  uint64_t hash = 0xcbf29ce484222325;
  for (int i = 0; i < rounds * 1000; i++)
    hash = (hash ^ (i & 0xff)) * 0x100000001b3;
  return hash;
}

uint64_t sorting(int rounds) {
  uint64_t sum = 0;
  std::vector<uint32_t> values(500);
  for (int round = 0; round < rounds; round++) {
    uint32_t state = round + 1;
    for (uint32_t& value : values)
      value = state = state * 1664525 + 1013904223;
    std::sort(values.begin(), values.end());
    sum += values[7];
  }
  return sum;
}

// A stack machine that counts down, dispatched by a jump table.
uint64_t interpreting(int rounds) {
  enum Code : uint8_t { push, add, multiply, decrement, branch, store, load, halt };
  const uint8_t program[] = {load, push, multiply, push, add, store, decrement, branch, halt};
  uint64_t stack[8] = {}, memory = 1;
  int counter = rounds * 100;
  size_t pc = 0, top = 0;
  for (;;)
    switch (program[pc++]) {
    case push:
      stack[top++] = 37;
      break;
    case add:
      top--, stack[top - 1] += stack[top];
      break;
    case multiply:
      top--, stack[top - 1] *= stack[top];
      break;
    case decrement:
      counter--;
      break;
    case branch:
      pc = counter > 0 ? 0 : pc;
      break;
    case store:
      memory = stack[--top];
      break;
    case load:
      stack[top++] = memory;
      break;
    default:
      return memory;
    }
}

[[gnu::noinline]] uint64_t fibonacci(int n) {
  asm volatile("");
  return n < 2 ? n : fibonacci(n - 1) + fibonacci(n - 2);
}

uint64_t recursion(int rounds) {
  uint64_t sum = 0;
  for (int round = 0; round < rounds; round++)
    sum += fibonacci(14);
  return sum;
}

struct Shape {
  virtual ~Shape() = default;
  virtual uint64_t area(uint64_t n) const = 0;
};
struct Square : Shape {
  uint64_t area(uint64_t n) const override { return n * n; }
};
struct Strip : Shape {
  uint64_t area(uint64_t n) const override { return n * 3; }
};
struct Frame : Shape {
  uint64_t area(uint64_t n) const override { return 4 * n - 4; }
};

uint64_t virtual_calls(int rounds) {
  std::vector<std::unique_ptr<Shape>> shapes;
  for (int i = 0; i < 30; i++) {
    if (i % 3 == 0)
      shapes.push_back(std::make_unique<Square>());
    if (i % 3 == 1)
      shapes.push_back(std::make_unique<Strip>());
    if (i % 3 == 2)
      shapes.push_back(std::make_unique<Frame>());
  }
  uint64_t sum = 0;
  for (int round = 0; round < rounds * 10; round++)
    for (const auto& shape : shapes)
      sum += shape->area(round);
  return sum;
}

[[gnu::noinline]] uint64_t choose(uint32_t x) {
  switch (x % 11) {
  case 0:
    return x + 1;
  case 1:
    return x ^ 0x55;
  case 2:
    return x * 3ull;
  case 3:
    return ~x;
  case 4:
    return x >> 3;
  case 5:
    return x << 5;
  case 6:
    return x - 9;
  case 7:
    return x | 0x1000;
  case 8:
    return x & 0xff0;
  case 9:
    return x / 3;
  default:
    return 0;
  }
}

uint64_t switches(int rounds) {
  uint64_t sum = 0;
  for (int i = 0; i < rounds * 200; i++)
    sum += choose(static_cast<uint32_t>(sum) + i);
  return sum;
}

uint64_t strings(int rounds) {
  uint64_t sum = 0;
  for (int round = 0; round < rounds; round++) {
    std::unordered_map<std::string, int> counts;
    for (int i = 0; i < 50; i++)
      counts[std::to_string(i % 17 * round)]++;
    sum += counts.size();
  }
  return sum;
}

const struct {
  const char* name;
  uint64_t (*run)(int rounds);
} programs[] = {{"hashing", hashing},
                {"sorting", sorting},
                {"interpreting", interpreting},
                {"recursion", recursion},
                {"virtual_calls", virtual_calls},
                {"switches", switches},
                {"strings", strings}};

}  // namespace

int main(int argc, char** argv) {
  for (const auto& program : programs) {
    if (argc < 3)
      puts(program.name);
    if (argc >= 3 && strcmp(argv[1], program.name) == 0)
      printf("%llu\n", static_cast<unsigned long long>(program.run(atoi(argv[2]))));
  }
}
