// Runs a fuzz target where there is no libFuzzer: what a corpus holds, then seeded mutations of it.
// The options are some of libFuzzer's, so that a command line serves either:
//
//   fuzz_<target> [-runs=N] [-seed=N] [-max_total_time=SECONDS] [<corpus folder or file>...]
//
// Without a limit it goes on; of files alone, it runs these once. A child does the work. Its input
// lies in memory that the parent has too, which writes it to a file if the child dies of it,
// whatever of.
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/fuzz/target.h"

namespace {

constexpr size_t most_bytes = 4096;
constexpr time_t most_seconds = 60;  // of processor time for one input
constexpr int status_missed = 2;

struct Settings {
  uint64_t runs = ~uint64_t{0}, seed = 1, seconds = 1u << 30;
  std::vector<std::string> corpus;
};

Settings settings_of(int argc, char** argv) {
  Settings settings;
  bool files_alone = argc > 1;
  for (int i = 1; i < argc; i++) {
    const std::string text = argv[i];
    files_alone = files_alone && std::filesystem::is_regular_file(text);
    const std::string value = text.substr(std::min(text.size(), text.find('=') + 1));
    if (text.starts_with("-runs="))
      settings.runs = std::stoull(value);
    else if (text.starts_with("-seed="))
      settings.seed = std::stoull(value);
    else if (text.starts_with("-max_total_time="))
      settings.seconds = std::stoull(value);
    else
      settings.corpus.push_back(text);
  }
  if (files_alone)
    settings.runs = 0;
  return settings;
}

std::vector<std::string> read_corpus(const std::vector<std::string>& names) {
  std::vector<std::string> files, inputs;
  for (const std::string& name : names)
    if (std::filesystem::is_directory(name))
      for (const auto& entry : std::filesystem::directory_iterator(name))
        files.push_back(entry.path());
    else
      files.push_back(name);
  std::sort(files.begin(), files.end());
  for (const std::string& name : files) {
    std::ifstream file(name, std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (!file || inputs.back().size() > most_bytes) {
      fprintf(stderr, "%s cannot be read, or is too long\n", name.c_str());
      exit(1);
    }
  }
  return inputs;
}

class Mutator {
public:
  Mutator(std::vector<std::string> corpus, uint64_t seed)
      : corpus_(std::move(corpus)), random_(seed) {}

  std::string next() {
    if (corpus_.empty() || any(8) == 0)
      return noise(any(any(2) == 0 ? 64 : 1024));
    std::string text = corpus_[any(corpus_.size())];
    for (size_t changes = 1 + any(6); changes > 0; changes--)
      change(text);
    text.resize(std::min(text.size(), most_bytes));
    return text;
  }

private:
  size_t any(size_t below) { return random_() % below; }

  std::string noise(size_t length) {
    std::string text(length, '\0');
    for (char& c : text)
      c = static_cast<char>(random_());
    return text;
  }

  // Around a power of two, or a small multiple of one, or of either sign.
  uint64_t interesting() {
    const uint64_t power = uint64_t{1} << any(64), value = power * (1 + any(3)) + any(3) - 1;
    return any(8) == 0 ? random_() : any(4) == 0 ? ~value + 1 : value;
  }

  void change(std::string& text) {
    const size_t at = any(text.size() + 1), length = std::min(any(17), text.size() - at);
    switch (any(8)) {
    case 0:
      text.insert(at, noise(1 + any(16)));
      break;
    case 1:
      text.erase(at, length);
      break;
    case 2: {
      const std::string& other = corpus_[any(corpus_.size())];
      const size_t from = any(other.size() + 1);
      text.replace(at, length, other.substr(from, any(17)));
      break;
    }
    case 3:
      if (any(8) == 0)
        text.resize(at);
      break;
    case 4:
      if (at < text.size())
        text[at] = static_cast<char>(text[at] ^ 1 << any(8));
      break;
    default:
      overwrite(text, size_t{1} << any(4));
    }
  }

  // A number of so many bytes, mostly where one may stand.
  void overwrite(std::string& text, size_t bytes) {
    if (text.size() < bytes)
      return;
    const uint64_t value = interesting();
    size_t at = any(text.size() - bytes + 1);
    at -= any(4) == 0 ? 0 : at % bytes;
    memcpy(text.data() + at, &value, bytes);
  }

  std::vector<std::string> corpus_;
  std::mt19937_64 random_;
};

struct Shared {
  uint64_t done;
  size_t size;
  uint8_t bytes[most_bytes];
};

void run(Shared& shared, const std::string& input) {
  const itimerval limit = {{}, {most_seconds, 0}};
  setitimer(ITIMER_PROF, &limit, nullptr);
  shared.size = input.size();
  memcpy(shared.bytes, input.data(), input.size());
  // In a block of its own size, so that the sanitizers see what is read behind it.
  const std::vector<uint8_t> copy(input.begin(), input.end());
  LLVMFuzzerTestOneInput(copy.data(), copy.size());
  shared.done++;
}

int work(const Settings& settings, Shared& shared) {
  const std::vector<std::string> corpus = read_corpus(settings.corpus);
  for (const std::string& input : corpus)
    run(shared, input);
  Mutator mutator(corpus, settings.seed);
  const auto start = std::chrono::steady_clock::now();
  const std::chrono::seconds most(settings.seconds);
  for (uint64_t i = 0; i < settings.runs; i++) {
    run(shared, mutator.next());
    if (i % 64 == 0 && std::chrono::steady_clock::now() - start >= most)
      break;
  }
  const std::string missed = fuzz_missed != nullptr && settings.runs != 0 ? fuzz_missed() : "";
  printf("%lu inputs%s%s\n", shared.done, missed.empty() ? "" : ", none of which ", missed.c_str());
  return missed.empty() ? 0 : status_missed;
}

}  // namespace

int main(int argc, char** argv) {
  const Settings settings = settings_of(argc, argv);
  auto* const shared = static_cast<Shared*>(
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  const pid_t child = fork();
  if (child == 0) {
    if (LLVMFuzzerInitialize != nullptr)
      LLVMFuzzerInitialize(&argc, &argv);
    const int status = work(settings, *shared);
    fflush(nullptr);
    _exit(status);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == status_missed))
    return WEXITSTATUS(status);
  const std::filesystem::path program(argv[0]);
  const std::string name = program.filename().string() + "-" + std::to_string(settings.seed) + "-" +
                           std::to_string(shared->done);
  std::ofstream(name, std::ios::binary)
      .write(reinterpret_cast<const char*>(shared->bytes),
             static_cast<std::streamsize>(shared->size));
  fprintf(stderr, "ended with status %x at input %lu; once more: %s %s\n", status, shared->done,
          std::filesystem::absolute(program).c_str(), std::filesystem::absolute(name).c_str());
  return 1;
}
