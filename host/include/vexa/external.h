// The host's external-call interface (C++): everything a library loaded by the host uses. Every
// operation takes the kernel handle first. Errors are raised as host errors (C++ exceptions
// that unwind to the host's trap or top level); a raising operation never returns.
#ifndef VEXA_EXTERNAL_H
#define VEXA_EXTERNAL_H

#include <stddef.h>
#include <stdint.h>

#include "vexa/float.h"
#include "vexa/handle.h"

typedef struct _VexaKernelVectorDesc* VexaKernelVector;

typedef intptr_t M_INT;  // one machine word
typedef int M_BOOL;      // 1 true, 0 false, -1 FAIL where a third value is meaningful

typedef int8_t INTEGER8;
typedef int16_t INTEGER16;
typedef int32_t INTEGER32;
typedef int64_t INTEGER64;
typedef float FLOAT32;
typedef double FLOAT64;

typedef struct {
  FLOAT64 re, im;
} ComplexFloat64;

typedef struct {
  ALGEB re, im;
} RTableComplexDag;

// One rtable element; which member is meaningful follows the rtable's data type.
typedef union {
  INTEGER8 int8;
  INTEGER16 int16;
  INTEGER32 int32;
  INTEGER64 int64;
  FLOAT32 float32;
  FLOAT64 float64;
  ComplexFloat64 complexf64;
  RTableComplexDag cxdag;
  ALGEB dag;
} RTableData;

// Element data types, with the width of one element of a rectangular data block.
enum {
  RTABLE_DAG = 0,        // one handle
  RTABLE_CXDAG = 1,      // two handles (real, imaginary)
  RTABLE_INTEGER8 = 2,   // 1 byte
  RTABLE_INTEGER16 = 3,  // 2 bytes
  RTABLE_INTEGER32 = 4,  // 4 bytes
  RTABLE_INTEGER64 = 5,  // 8 bytes
  RTABLE_FLOAT64 = 6,    // 8 bytes
  RTABLE_COMPLEX = 7,    // 16 bytes: two FLOAT64
  RTABLE_FLOAT32 = 8,    // 4 bytes
  RTABLE_NUM_DATATYPES = 9
};

// Storage: rectangular keeps every element in one contiguous data block; sparse keeps only
// the elements assigned a non-zero value and is reached through RTableSelect/RTableAssign.
enum { RTABLE_SPARSE = 1, RTABLE_RECT = 4 };
// Order of a rectangular data block: column-major (first index fastest) or row-major.
enum { RTABLE_FORTRAN = 0, RTABLE_C = 1 };
// What the rtable is shown as.
enum { RTABLE_ARRAY = 0, RTABLE_MATRIX = 1, RTABLE_COLUMN = 2, RTABLE_ROW = 3 };

typedef struct {
  int num_dimensions;
  int data_type;       // RTABLE_DAG ... RTABLE_FLOAT32
  int storage;         // RTABLE_RECT or RTABLE_SPARSE
  int order;           // RTABLE_FORTRAN or RTABLE_C
  int subtype;         // RTABLE_ARRAY ...
  M_BOOL read_only;    // assignments raise an error
  ALGEB element_type;  // a name such as sfloat or anything (defaults: anything)
} RTableSettings;

extern "C" {

// Expression sequences (argument sequences); indices are 1-based.
M_INT VexaNumArgs(VexaKernelVector kv, ALGEB args);
ALGEB VexaExpseqSelect(VexaKernelVector kv, ALGEB s, M_INT i);
ALGEB NewVexaExpressionSequence(VexaKernelVector kv, M_INT n);  // n slots holding NULL
void VexaExpseqAssign(VexaKernelVector kv, ALGEB s, M_INT i, ALGEB value);

// Errors: %1 and %2 in the message stand for the printed arguments.
[[noreturn]] void VexaRaiseError(VexaKernelVector kv, const char* msg);
[[noreturn]] void VexaRaiseError1(VexaKernelVector kv, const char* msg, ALGEB a1);
[[noreturn]] void VexaRaiseError2(VexaKernelVector kv, const char* msg, ALGEB a1, ALGEB a2);
// Runs proc(data) and returns its result. A host error raised inside sets *errorflag to 1
// and gives null; otherwise *errorflag is 0.
void* VexaTrapError(VexaKernelVector kv, void* (*proc)(void* data), void* data, M_BOOL* errorflag);

// Evaluation and procedures.
ALGEB EvalVexaProcedure(VexaKernelVector kv, ALGEB proc, ALGEB args);
ALGEB EvalVexaProc(VexaKernelVector kv, ALGEB proc, int nargs, ...);  // nargs ALGEBs
ALGEB VexaEval(VexaKernelVector kv, ALGEB e);
double VexaEvalhf(VexaKernelVector kv, ALGEB e);
ALGEB VexaAssign(VexaKernelVector kv, ALGEB name, ALGEB value);  // the previous value
ALGEB ToVexaName(VexaKernelVector kv, const char* text, M_BOOL global);

// Building values.
ALGEB ToVexaBoolean(VexaKernelVector kv, M_BOOL b);  // 1 true, 0 false, -1 FAIL
ALGEB ToVexaInteger(VexaKernelVector kv, M_INT v);
ALGEB ToVexaInteger64(VexaKernelVector kv, INTEGER64 v);
ALGEB ToVexaFloat(VexaKernelVector kv, double v);  // shortest decimal that reads back as v
ALGEB ToVexaNULL(VexaKernelVector kv);
ALGEB ToVexaComplex(VexaKernelVector kv, double re, double im);
ALGEB ToVexaComplexFloat(VexaKernelVector kv, ALGEB re, ALGEB im);  // two numeric values

// Reading values. Integers only (a float is an error); VexaToM_BOOL: true 1, false 0,
// FAIL -1, an integer its value.
INTEGER32 VexaToInteger32(VexaKernelVector kv, ALGEB e);
INTEGER64 VexaToInteger64(VexaKernelVector kv, ALGEB e);
M_INT VexaToM_INT(VexaKernelVector kv, ALGEB e);
M_BOOL VexaToM_BOOL(VexaKernelVector kv, ALGEB e);

// Type tests.
M_BOOL IsVexaNumeric(VexaKernelVector kv, ALGEB e);  // integer, rational or float
M_BOOL IsVexaProcedure(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaRTable(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaList(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaTable(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaString(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaName(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaNULL(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaInteger(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaInteger8(VexaKernelVector kv, ALGEB e);  // an integer that fits in 8 bits
M_BOOL IsVexaInteger16(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaInteger32(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaInteger64(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaAssignedName(VexaKernelVector kv, ALGEB e);
M_BOOL IsVexaUnnamedZero(VexaKernelVector kv, ALGEB e);  // the integer 0 or a float zero

// Collector. Protection is counted: each VexaGcProtect needs its own VexaGcAllow.
// Allowing a value that is not protected does nothing.
void VexaGcProtect(VexaKernelVector kv, ALGEB e);
void VexaGcAllow(VexaKernelVector kv, ALGEB e);
void* VexaAlloc(VexaKernelVector kv, M_INT nbytes);           // collected, scanned, zeroed
void* VexaNew(VexaKernelVector kv, M_INT count, M_INT size);  // the same, for an array

// Lists (1-based), tables and exact addition.
ALGEB VexaListAlloc(VexaKernelVector kv, M_INT n);  // n slots holding 0
void VexaListAssign(VexaKernelVector kv, ALGEB list, M_INT i, ALGEB value);
ALGEB VexaListSelect(VexaKernelVector kv, ALGEB list, M_INT i);
M_INT VexaListLength(VexaKernelVector kv, ALGEB list);  // the number of elements
// Ranges lo .. hi and equations lhs = rhs. The ends of a non-range raise an error.
M_BOOL IsVexaRange(VexaKernelVector kv, ALGEB e);
ALGEB VexaRangeLow(VexaKernelVector kv, ALGEB range);
ALGEB VexaRangeHigh(VexaKernelVector kv, ALGEB range);
ALGEB ToVexaRange(VexaKernelVector kv, ALGEB lo, ALGEB hi);
ALGEB ToVexaEquation(VexaKernelVector kv, ALGEB lhs, ALGEB rhs);
ALGEB VexaTableAlloc(VexaKernelVector kv);
void VexaTableAssign(VexaKernelVector kv, ALGEB table, ALGEB index, ALGEB value);
M_BOOL VexaTableHasEntry(VexaKernelVector kv, ALGEB table, ALGEB index);
ALGEB VexaTableSelect(VexaKernelVector kv, ALGEB table, ALGEB index);  // null if absent
ALGEB VexaNumericAdd(VexaKernelVector kv, ALGEB a, ALGEB b);

// rtables. bounds holds lower and upper bound of each dimension in turn (2 * dims
// entries); index holds one entry per dimension. Without initial data (pdata null) every
// element is its type's zero (the float 0. for element type sfloat). pdata, when given, is
// a rectangular data block in the settings' order.
void RTableGetDefaults(VexaKernelVector kv, RTableSettings* s);
void RTableGetSettings(VexaKernelVector kv, RTableSettings* s, ALGEB rt);
ALGEB RTableCreate(VexaKernelVector kv, RTableSettings* s, void* pdata, M_INT* bounds);
// A copy with the settings s (null: the same settings); elements are converted.
ALGEB RTableCopy(VexaKernelVector kv, RTableSettings* s, ALGEB rt);
RTableData RTableSelect(VexaKernelVector kv, ALGEB rt, M_INT* index);
void RTableAssign(VexaKernelVector kv, ALGEB rt, M_INT* index, RTableData value);
void* RTableDataBlock(VexaKernelVector kv, ALGEB rt);              // rectangular storage only
M_INT RTableLowerBound(VexaKernelVector kv, ALGEB rt, M_INT dim);  // dim from 1
M_INT RTableUpperBound(VexaKernelVector kv, ALGEB rt, M_INT dim);
M_INT RTableNumDimensions(VexaKernelVector kv, ALGEB rt);
M_INT RTableNumElements(VexaKernelVector kv, ALGEB rt);
M_INT RTableElementWidth(VexaKernelVector kv, int data_type);  // bytes of one element

// Random source: the host's Mersenne Twister stream.
uint32_t VexaRandomInt32(VexaKernelVector kv);
ALGEB VexaRandomSoftwareFloat01(VexaKernelVector kv);  // k * 10^-Digits, k in [0, 10^Digits)
void VexaRandomSeed(VexaKernelVector kv, uint64_t seed);

// Prints "name: text" when infolevel[name] or infolevel[all] is at least level.
void VexaUserInfo(VexaKernelVector kv, int level, const char* name, const char* text);
// Ends the running call as an interrupted statement when the user has asked to stop (Ctrl-C);
// long loops that make no host values call it now and then.
void VexaCheckInterrupt(VexaKernelVector kv);

}  // extern "C"

#endif
