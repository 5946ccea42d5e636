// Refusals of the operating system, as the runtime meets them: TAVOK_TEST_REFUSE is the name of a
// call and which one of its calls fails, as in "mmap 3"; "execute-and-write" refuses memory that is
// both, "execute" all executable memory.
#include <pthread.h>
#include <sys/mman.h>
#include <sys/types.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

bool is_wanted(const char* name, std::atomic<int>& count) {
  const char* const refused = std::getenv("TAVOK_TEST_REFUSE");
  const size_t length = std::strlen(name);
  return refused != nullptr && std::strncmp(refused, name, length) == 0 && refused[length] == ' ' &&
         ++count == std::atoi(refused + length);
}

bool is_refused_protection(int protection) {
  const char* const refused = std::getenv("TAVOK_TEST_REFUSE");
  if (refused == nullptr || (protection & PROT_EXEC) == 0) {
    return false;
  }
  return std::strcmp(refused, "execute") == 0 ||
         (std::strcmp(refused, "execute-and-write") == 0 && (protection & PROT_WRITE) != 0);
}

std::atomic<int> mmaps, mprotects, threads, stacks;

}  // namespace

extern "C" {
void* __real_mmap(void* at, size_t size, int protection, int flags, int fd, off_t offset);
int __real_mprotect(void* at, size_t size, int protection);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument);
int __real_sigaltstack(const stack_t* stack, stack_t* old);

void* __wrap_mmap(void* at, size_t size, int protection, int flags, int fd, off_t offset) {
  if (is_wanted("mmap", mmaps)) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
  if (is_refused_protection(protection)) {
    errno = EACCES;
    return MAP_FAILED;
  }
  return __real_mmap(at, size, protection, flags, fd, offset);
}

int __wrap_mprotect(void* at, size_t size, int protection) {
  if (is_wanted("mprotect", mprotects) || is_refused_protection(protection)) {
    errno = EACCES;
    return -1;
  }
  return __real_mprotect(at, size, protection);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                          void* argument) {
  return is_wanted("pthread_create", threads)
             ? EAGAIN
             : __real_pthread_create(thread, attributes, body, argument);
}

int __wrap_sigaltstack(const stack_t* stack, stack_t* old) {
  if (is_wanted("sigaltstack", stacks)) {
    errno = ENOMEM;
    return -1;
  }
  return __real_sigaltstack(stack, old);
}
}
