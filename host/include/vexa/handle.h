// The host's handle to an expression: one machine word. Low bit set: an immediate
// integer (value << 1 | 1). Otherwise a pointer to a collected node whose first 32-bit
// word is a header with the node's type code in its top six bits.
#ifndef VEXA_HANDLE_H
#define VEXA_HANDLE_H

#include <stdint.h>

typedef struct _VexaNode* ALGEB;

#endif
