#pragma once

#include "libs/Trace/Trace.h"

// Writes one record of the provider's operations, which all bear its name, whichever file they are in.
#define SR_PROVIDER_TRACE(traceLevel) SR_TRACE_AT("src/SRLib/SRProvider.cpp", traceLevel)
