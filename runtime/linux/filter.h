// Programs of the classic packet filter, as seccomp uses them.
#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>

#include <cstdint>
#include <vector>

namespace os {

// Whether the kernel would take the program for a filter of system calls.
bool is_filter(const std::vector<sock_filter>& program);

// What a program that is_filter says of a call.
uint32_t run_filter(const std::vector<sock_filter>& program, const seccomp_data& data);

}  // namespace os
