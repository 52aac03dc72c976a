// ArgList_s: a list of named, typed arguments, the form in which add-ons pass options. Names are
// matched without regard to case and the first of two namesakes wins. Every successful get marks
// the argument as read, so the add-on layer can find arguments that nobody looked at.
// Relies on: arrlist, strutil, alloc.
#pragma once

#include "base/kernel/types.h"

struct ArgList_s;

// What a getter found: the argument with another kind, no such argument, or the argument.
enum ArgListGetResult_e {
    ArgListGetResult_WrongKind = 0,
    ArgListGetResult_NotFound = 1,
    ArgListGetResult_Found = 2
};

ArgList_s *ArgListAlloc();
void ArgListDealloc(ArgList_s **argList);
bool ArgListIsValid(const ArgList_s *argList);
void ArgListClear(ArgList_s *argList);
LgIndex_t ArgListGetCount(const ArgList_s *argList);
LgIndex_t ArgListGetAccessCount(const ArgList_s *argList);

// Each append copies the name (and for a string, the value); false on out of memory, with the
// list unchanged.
bool ArgListAppendArbParam(ArgList_s *argList, const char *name, ArbParam_t value);
bool ArgListAppendArbParamPtr(ArgList_s *argList, const char *name, ArbParam_t *value);
bool ArgListAppendLgIndex(ArgList_s *argList, const char *name, LgIndex_t value);
bool ArgListAppendDouble(ArgList_s *argList, const char *name, double value);
bool ArgListAppendDoublePtr(ArgList_s *argList, const char *name, double *value);
bool ArgListAppendString(ArgList_s *argList, const char *name, const char *value);
bool ArgListAppendRef(ArgList_s *argList, const char *name, void *value);

ArgListGetResult_e ArgListGetArbParam(ArgList_s *argList, const char *name, ArbParam_t *value);
ArgListGetResult_e ArgListGetArbParamPtr(ArgList_s *argList, const char *name, ArbParam_t **value);
ArgListGetResult_e ArgListGetLgIndex(ArgList_s *argList, const char *name, LgIndex_t *value);
ArgListGetResult_e ArgListGetDouble(ArgList_s *argList, const char *name, double *value);
ArgListGetResult_e ArgListGetDoublePtr(ArgList_s *argList, const char *name, double **value);
// *value receives a copy the caller frees (null for a null string, or when memory runs out).
ArgListGetResult_e ArgListGetString(ArgList_s *argList, const char *name, char **value);
ArgListGetResult_e ArgListGetRef(ArgList_s *argList, const char *name, void **value);
