// AuxData_s: a map of name and value pairs hung on a data set, zone, variable or frame. Names are
// unique without regard to case, and the items stay sorted by name under ustrcmp.
// Relies on: arrlist, strutil, alloc.
#pragma once

#include "base/kernel/types.h"

struct AuxData_s;

enum AuxDataType_e {
    AuxDataType_String = 0  // Value is a const char * held in the ArbParam_t; the item keeps a copy
};

AuxData_s *AuxDataAlloc();
void AuxDataDealloc(AuxData_s **auxData);
// With considerRetain, items whose retain flag is false are left out of the copy.
AuxData_s *AuxDataCopy(const AuxData_s *source, bool considerRetain);
LgIndex_t AuxDataGetNumItems(const AuxData_s *auxData);
// True if the name exists; itemIndex receives its index, or the index where it would be inserted.
bool AuxDataGetItemIndex(const AuxData_s *auxData, const char *name, LgIndex_t *itemIndex);
// The name and a string value are lent, not copied: they stay the map's. Null out-parameters are
// skipped.
void AuxDataGetItemByIndex(const AuxData_s *auxData, LgIndex_t index, const char **name, ArbParam_t *value,
                           AuxDataType_e *type, bool *retain);
bool AuxDataGetItemByName(const AuxData_s *auxData, const char *name, ArbParam_t *value, AuxDataType_e *type,
                          bool *retain);
// The value is true for "YES", "YEP", "Y", "TRUE", "T", "ON" or "1" in any case. A missing item
// gives false, in the value and in the result.
bool AuxDataGetBooleanItemByName(const AuxData_s *auxData, const char *name, bool *value, AuxDataType_e *type,
                                 bool *retain);
// Replaces an item of the same name (in any case) or inserts a new one; on failure the map is
// unchanged.
bool AuxDataSetItem(AuxData_s *auxData, const char *name, ArbParam_t value, AuxDataType_e type, bool retain);
void AuxDataDeleteItemByIndex(AuxData_s *auxData, LgIndex_t index);
bool AuxDataDeleteItemByName(AuxData_s *auxData, const char *name);  // false if there is no such item
// Sets every item of source in target; on failure target is unchanged.
bool AuxDataAppendItems(AuxData_s *target, const AuxData_s *source);
// Item destructor for the map's item list: itemRef is the address of an item record pointer.
bool AuxDataItemDestructor(void *itemRef, ArbParam_t clientData);
bool AuxDataIsValidName(const char *name);
bool AuxDataIsValidNameChar(char c, bool isLeadChar);

// Calls visit with the name and string value of each item whose Retain flag is set, in order:
// the items that go into saved files.
void AuxDataVisitRetainedItems(const AuxData_s *auxData, void (*visit)(const char *name, const char *value, void *clientData),
                               void *clientData);
