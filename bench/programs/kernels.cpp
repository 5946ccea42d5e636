// Kernels that a compiler makes, of plain loops or of intrinsics: kernels <name> <rounds> runs one
// so many times, kernels <name> throughput <threads> [<asleep>] measures, with so many more threads
// that only sleep. Without arguments, lists the names.
#include <arm_sve.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

constexpr int size = 256;

struct Data {
  int32_t a[size], b[size];
  float x[size], y[size];
  double u[size], v[size];
  float16_t h[size], k[size];
  uint32_t indices[size];
  char text[size];

  Data() {
    for (int i = 0; i < size; i++) {
      a[i] = i * 7 - 300;
      b[i] = i ^ 0x55;
      x[i] = y[i] = static_cast<float>(i) / 16;
      u[i] = v[i] = i / 16.0;
      h[i] = k[i] = static_cast<float16_t>(static_cast<float>(i) / 64);
      indices[i] = i * 37 % size;
      text[i] = static_cast<char>('a' + i % 26);
    }
    text[size - 1] = 0;
  }
};

[[gnu::noinline]] void integer_loop(Data& data) {
  for (int i = 0; i < size; i++)
    data.a[i] = (data.a[i] * 3 + data.b[i]) ^ (data.a[i] >> 2);
}

[[gnu::noinline]] void saxpy(Data& data) {
  for (int i = 0; i < size; i++)
    data.y[i] += 0.5f * data.x[i];
}

[[gnu::noinline]] void daxpy(Data& data) {
  for (int i = 0; i < size; i++)
    data.v[i] += 0.5 * data.u[i];
}

[[gnu::noinline]] void dot_product(Data& data) {
  svfloat32_t sum = svdup_f32(0);
  for (uint32_t i = 0; i < size; i += svcntw()) {
    const svbool_t p = svwhilelt_b32(i, uint32_t{size});
    sum = svmla_m(p, sum, svld1(p, data.x + i), svld1(p, data.y + i));
  }
  data.y[0] = svaddv(svptrue_b32(), sum) * 1e-9f;
}

[[gnu::noinline]] void first_fault_strlen(Data& data) {
  for (uint64_t n = 0;;) {
    svsetffr();
    const auto text = svldff1(svptrue_b8(), reinterpret_cast<const uint8_t*>(data.text) + n);
    const svbool_t read = svrdffr();
    const svbool_t ends = svcmpeq(read, text, 0);
    if (svptest_any(read, ends)) {
      data.a[0] = static_cast<int32_t>(n + svcntp_b8(read, svbrkb_z(read, ends)));
      return;
    }
    n += svcntp_b8(read, read);
  }
}

[[gnu::noinline]] void gather(Data& data) {
  for (uint32_t i = 0; i < size; i += svcntw()) {
    const svbool_t p = svwhilelt_b32(i, uint32_t{size});
    const svint32_t found = svld1_gather_index(p, data.b, svld1(p, data.indices + i));
    svst1(p, data.a + i, svadd_x(p, svld1(p, data.a + i), found));
  }
}

[[gnu::noinline]] void half_precision(Data& data) {
  for (uint32_t i = 0; i < size; i += svcnth()) {
    const svbool_t p = svwhilelt_b16(i, uint32_t{size});
    const svfloat16_t h = svld1(p, data.h + i), k = svld1(p, data.k + i);
    svst1(p, data.k + i, svmla_x(p, svadd_x(p, h, k), h, k));
  }
}

[[gnu::noinline]] void mandelbrot(Data& data) {
  for (int i = 0; i < size; i++) {
    const float cx = data.x[i] / 8 - 1.5f, cy = 0.25f;
    float zx = 0, zy = 0;
    int count = 0;
    for (int step = 0; step < 16; step++) {
      const float xx = zx * zx, yy = zy * zy;
      count += xx + yy < 4;
      zy = 2 * zx * zy + cy;
      zx = xx - yy + cx;
    }
    data.a[i] = count;
  }
}

[[gnu::noinline]] void matrix_product(Data& data) {
  constexpr uint32_t side = 16;
  for (uint32_t row = 0; row < side; row++) {
    for (uint32_t column = 0; column < side; column += svcntw()) {
      const svbool_t p = svwhilelt_b32(column, side);
      svfloat32_t sum = svdup_f32(0);
      for (uint32_t k = 0; k < side; k++)
        sum = svmla_m(p, sum, svld1(p, data.x + k * side + column), data.x[row * side + k]);
      svst1(p, data.y + row * side + column, sum);
    }
  }
}

const struct Kernel {
  const char* name;
  void (*run)(Data&);
} kernels[] = {{"integer_loop", integer_loop},
               {"saxpy", saxpy},
               {"daxpy", daxpy},
               {"dot_product", dot_product},
               {"first_fault_strlen", first_fault_strlen},
               {"gather", gather},
               {"half_precision", half_precision},
               {"mandelbrot", mandelbrot},
               {"matrix_product", matrix_product}};

// Rounds that all threads together get done in a millisecond, of many short spans of time: what
// else the machine does spoils some of them. Sleepers make it a process that has other threads.
void print_throughput(const Kernel& kernel, int threads, int sleepers) {
  struct alignas(256) Progress {
    std::atomic<uint64_t> rounds;
  };
  using Clock = std::chrono::steady_clock;
  constexpr int warm_up = 10, spans = 100;
  constexpr std::chrono::microseconds span(10'000);

  std::vector<Progress> progress(threads);
  std::atomic<bool> over = false;
  std::vector<std::thread> others;
  for (int i = 1; i < threads; i++)
    others.emplace_back([&, i] {
      for (Data data; !over; progress[i].rounds++)
        kernel.run(data);
    });
  for (int i = 0; i < sleepers; i++)
    others.emplace_back([&] { over.wait(false); });
  Data data;
  std::vector<double> throughput;
  for (int i = 0; i < warm_up + spans; i++) {
    uint64_t done = 0;
    for (const Progress& thread : progress)
      done -= thread.rounds;
    const auto start = Clock::now();
    std::chrono::duration<double, std::milli> passed;
    do {
      kernel.run(data);
      progress[0].rounds++;
      passed = Clock::now() - start;
    } while (passed < span);
    for (const Progress& thread : progress)
      done += thread.rounds;
    if (i >= warm_up)
      throughput.push_back(done / passed.count());
  }
  over = true;
  over.notify_all();
  for (std::thread& other : others)
    other.join();
  std::sort(throughput.begin(), throughput.end());
  printf("%.3f median, %.3f best\n", throughput[spans / 2], throughput[spans - 1]);
}

}  // namespace

int main(int argc, char** argv) {
  for (const Kernel& kernel : kernels) {
    if (argc < 3) {
      puts(kernel.name);
    } else if (strcmp(argv[1], kernel.name) == 0) {
      if (strcmp(argv[2], "throughput") == 0) {
        print_throughput(kernel, argc > 3 ? atoi(argv[3]) : 1, argc > 4 ? atoi(argv[4]) : 0);
        continue;
      }
      Data data;
      for (int round = 0; round < atoi(argv[2]); round++)
        kernel.run(data);
    }
  }
}
