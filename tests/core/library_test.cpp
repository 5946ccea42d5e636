// libtavok.so as a stranger sees it: loaded on its own, without a runtime.
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "sve/model/context.h"
#include "sve/state/cpu_state.h"
#include "tests/core/child_process.h"

namespace {

using Names = std::set<std::string>;

const Names exported = {
    "dr_client_main",   "_USES_DR_VERSION_",
    "is_sve",           "execute_sve_instruction",
    "dump_state",       "info_all_registers",
    "dump_sve_stats",   "sve_instr_count",
    "icounts_mutex",    "exe",
    "sveFaultJB",       "SVEFaultRegion",
    "cpu_ctxt",         "ctxt",
    "sve_in_libraries", "sve_faults_as_hardware",
};

struct DynamicSymbols {
  Names defined;
  Names undefined;
  Names weak_undefined;
};

DynamicSymbols read_dynamic_symbols(const char* path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> image(std::istreambuf_iterator<char>(file), {});
  DynamicSymbols symbols;
  Elf64_Ehdr header;
  memcpy(&header, image.data(), sizeof header);
  std::vector<Elf64_Shdr> sections(header.e_shnum);
  memcpy(sections.data(), image.data() + header.e_shoff, header.e_shnum * sizeof sections[0]);
  for (const Elf64_Shdr& section : sections) {
    if (section.sh_type != SHT_DYNSYM)
      continue;
    const char* const names = image.data() + sections[section.sh_link].sh_offset;
    for (size_t at = sizeof(Elf64_Sym); at < section.sh_size; at += sizeof(Elf64_Sym)) {
      Elf64_Sym symbol;
      memcpy(&symbol, image.data() + section.sh_offset + at, sizeof symbol);
      if (ELF64_ST_TYPE(symbol.st_info) == STT_SECTION)
        continue;  // the linker's own, without a name
      Names& where = symbol.st_shndx != SHN_UNDEF                ? symbols.defined
                     : ELF64_ST_BIND(symbol.st_info) == STB_WEAK ? symbols.weak_undefined
                                                                 : symbols.undefined;
      where.insert(names + symbol.st_name);
    }
  }
  return symbols;
}

TEST(Library, ShowsItsInterfaceAndNothingElse) {
  const DynamicSymbols symbols = read_dynamic_symbols(TAVOK_LIBRARY);
  EXPECT_EQ(symbols.defined, exported);
}

// Without one it does not come to any of these.
TEST(Library, RefersWeaklyToTheRuntime) {
  const DynamicSymbols symbols = read_dynamic_symbols(TAVOK_LIBRARY);
  for (const char* name : {"drmgr_init", "dr_insert_call_tavok", "opnd_is_reg", "our_stderr"})
    EXPECT_TRUE(symbols.weak_undefined.contains(name)) << name;
}

class Loaded : public testing::Test {
protected:
  void SetUp() override {
    library = dlopen(TAVOK_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
  }
  void TearDown() override { dlclose(library); }

  template <class T> T symbol(const char* name) {
    return reinterpret_cast<T>(dlsym(library, name));
  }

  void* library = nullptr;
};

TEST_F(Loaded, CarriesOutAnInstruction) {
  const uint32_t code[] = {0x04c00861, 0xd503201f};  // ADD Z1.D, P2/M, Z1.D, Z3.D; NOP
  const auto execute = symbol<aarch64_decode_rc (*)(cpu_state*)>("execute_sve_instruction");
  ASSERT_NE(execute, nullptr);
  cpu_state state = {};
  state.pc = reinterpret_cast<uint64_t>(code);
  const uint64_t a[] = {1, 2}, b[] = {~0ull, 40}, sum[] = {0, 42};
  memcpy(state.z[1], a, sizeof a);
  memcpy(state.z[3], b, sizeof b);
  state.p[2][0] = state.p[2][8] = 1;
  EXPECT_EQ(execute(&state), aarch64_decode_ok);
  EXPECT_EQ(memcmp(state.z[1], sum, sizeof sum), 0);
  EXPECT_EQ(state.pc, reinterpret_cast<uint64_t>(code + 1));
  EXPECT_EQ(execute(&state), aarch64_decode_unimplemented);
  EXPECT_EQ(state.pc, reinterpret_cast<uint64_t>(code + 1));
}

// Its signal handler must not be left behind without its code.
TEST_F(Loaded, StaysLoaded) {
  const child_result result = run_in_child([this] {
    dlclose(library);
    raise(SIGSEGV);
  });
  EXPECT_EQ(result.count("tavok's SVESigHandler caught signal SIGSEGV"), 1) << result.status;
  EXPECT_TRUE(result.exited_with(0)) << result.status;  // the signal is not sent again
}

TEST_F(Loaded, HasAllNames) {
  for (const std::string& name : exported) {
    EXPECT_NE(dlsym(library, name.c_str()), nullptr) << name;
  }
  EXPECT_EQ(*symbol<const int32_t*>("_USES_DR_VERSION_"), 602);
  const auto* const configured = symbol<const CpuContext*>("cpu_ctxt");
  EXPECT_EQ(configured->vl, 2u);
  EXPECT_EQ(*symbol<CpuContext**>("ctxt"), configured);
}

}  // namespace
