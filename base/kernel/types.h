// Basic numeric types and small geometric records shared by every module of Orvanex.
// Numbers are zero-based inside the system; -1 means "none".
#pragma once

#include <cstdint>

using LgIndex_t = int32_t;    // point or element index
using EntIndex_t = int16_t;   // zone or variable number
using SmInteger_t = int16_t;
using SetIndex_t = int64_t;   // member of a Set_a
using ArbParam_t = intptr_t;  // an integer as wide as a pointer
using Boolean_t = bool;       // one byte, 0 or 1

static_assert(sizeof(Boolean_t) == 1, "Boolean_t must be one byte");
static_assert(sizeof(ArbParam_t) == 8, "ArbParam_t must be 64 bits");

constexpr LgIndex_t MAXINDEX = 2147483646;  // largest allowed LgIndex_t value
constexpr int BADSETVALUE = -1;             // end of a set member walk

struct Rect_s {
    double X1, Y1, X2, Y2;
};

struct XY_s {
    double X, Y;
};

struct XYZ_s {
    double X, Y, Z;
};

struct IndexRange_s {
    LgIndex_t Min, Max, Skip;
};
