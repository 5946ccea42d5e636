// What has to exist before the first instruction is emulated.
#pragma once

// 0 until SVEInitialize has run, then 1.
extern int SVELibInitialized;

// Installs the handler of memory faults and sets the configured vector length, once. Returns 1.
int SVEInitialize();
