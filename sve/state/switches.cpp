#include "sve/state/switches.h"

constinit bool sve_in_libraries = false;
constinit bool sve_faults_as_hardware = false;
