// C++ around vector loops: exceptions through frames that hold vectors, destructors on the way,
// virtual calls, containers, streams, and an exit status of its own.
#include <algorithm>
#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Filter {
  virtual ~Filter() = default;
  virtual void apply(std::vector<int>& values) const = 0;
};

struct Scale : Filter {
  explicit Scale(int f) : factor(f) {}
  void apply(std::vector<int>& values) const override {
    for (int& value : values)
      value = value * factor + 1;
  }
  int factor;
};

struct Clip : Filter {
  void apply(std::vector<int>& values) const override {
    for (int& value : values)
      value = value > 200 ? 200 : value < -200 ? -200 : value;
  }
};

struct Check : Filter {
  void apply(std::vector<int>& values) const override {
    int clipped = 0;
    for (const int value : values)
      clipped += value == 200 || value == -200;
    if (clipped > 15)
      throw std::runtime_error(std::to_string(clipped) + " are clipped");
  }
};

struct Leaving {
  Leaving(std::string& to, const std::vector<int>& held) : log(to), values(held) {}
  ~Leaving() {
    log += "left with " + std::to_string(std::accumulate(values.begin(), values.end(), 0));
  }
  std::string& log;
  const std::vector<int>& values;
};

[[gnu::noinline]] void run(const std::vector<std::unique_ptr<Filter>>& filters,
                           std::vector<int> values, std::string& log) {
  const Leaving leaving(log, values);
  for (const auto& filter : filters)
    filter->apply(values);
}

[[gnu::noipa]] void copy(int* to, const int* from, int n) {
  for (int i = 0; i < n; i++)
    to[i] = from[i] * 3;
}

void throw_signal(int number) { throw number; }

// Out of the handler of a fault in a vector loop.
void leave_by_exception() {
  struct sigaction action = {};
  action.sa_handler = throw_signal;
  action.sa_flags = SA_NODEFER;
  sigaction(SIGSEGV, &action, nullptr);
  std::vector<int> to(50);
  for (int round = 0; round < 3; round++) {
    try {
      copy(to.data(), reinterpret_cast<const int*>(64), 50);
    } catch (const int number) {
      std::cout << "caught " << number << "\n";
    }
    copy(to.data(), to.data(), 50);
  }
}

}  // namespace

int main() {
  std::vector<std::unique_ptr<Filter>> filters;
  std::map<std::string, int> outcomes;
  for (int step = 0; step < 7; step++) {
    filters.push_back(std::make_unique<Scale>(step - 3));
    filters.push_back(std::make_unique<Clip>());
    filters.push_back(std::make_unique<Check>());
    std::vector<int> values(37);
    std::iota(values.begin(), values.end(), -11 * step);
    std::string log;
    try {
      run(filters, values, log);
      outcomes["done"]++;
    } catch (const std::runtime_error& error) {
      outcomes[error.what()]++;
      log += std::string(", ") + error.what();
    }
    std::cout << "step " << step << ": " << log << "\n";
  }
  for (const auto& [outcome, times] : outcomes)
    std::cout << outcome << ": " << times << "\n";
  leave_by_exception();
  std::cerr << "on the error stream\n";
  return 43;
}
