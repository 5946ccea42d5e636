// Runs a function in a child process and tells how it ended and what it printed.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

struct child_result {
  int status;          // as from waitpid
  std::string errors;  // its standard error

  bool killed_by(int signal) const { return WIFSIGNALED(status) && WTERMSIG(status) == signal; }
  bool exited_with(int code) const { return WIFEXITED(status) && WEXITSTATUS(status) == code; }
  // How often the text stands in the child's standard error.
  int count(const std::string& text) const {
    int found = 0;
    for (size_t at = 0; (at = errors.find(text, at)) != std::string::npos; at += text.size())
      found++;
    return found;
  }
};

// The child ends with exit code 0 when the function returns, and with SIGALRM after a minute.
template <class Function> child_result run_in_child(Function function) {
  constexpr unsigned limit_seconds = 60;
  int ends[2];
  if (pipe(ends) != 0)
    return {-1, "no pipe"};
  fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    alarm(limit_seconds);
    function();
    fflush(nullptr);
    _exit(0);
  }
  close(ends[1]);
  child_result result{};
  char text[4096];
  for (ssize_t length; (length = read(ends[0], text, sizeof text)) > 0;)
    result.errors.append(text, static_cast<size_t>(length));
  close(ends[0]);
  waitpid(child, &result.status, 0);
  return result;
}
