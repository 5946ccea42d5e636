// What the shared library shows to a debugger, an embedder or the runtime; all else is hidden.
#pragma once

#define TAVOK_EXPORT __attribute__((visibility("default")))
