#include "sve/model/context.h"

CpuContext cpu_ctxt;
CpuContext* ctxt;
