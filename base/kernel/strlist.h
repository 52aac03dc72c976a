// StringList_s: a list of owned strings (an entry may be null). Setters copy their argument and
// getters give copies, except StringListGetStringRef, which lends the list's own string.
// Relies on: arrlist, strutil, alloc.
#pragma once

#include "base/kernel/types.h"

struct StringList_s;

// Orders two entries of a list; either may be null.
typedef int (*StringListStringComparator_pf)(const char *string1, const char *string2, ArbParam_t clientData);

StringList_s *StringListAlloc();
void StringListDealloc(StringList_s **list);
void StringListClear(StringList_s *list);
bool StringListAppendString(StringList_s *list, const char *s);
LgIndex_t StringListCount(const StringList_s *list);
char *StringListGetString(const StringList_s *list, LgIndex_t index);  // copy; null for a null entry
const char *StringListGetStringRef(const StringList_s *list, LgIndex_t index);
// An index past the end extends the list with null entries.
bool StringListSetString(StringList_s *list, LgIndex_t index, const char *s);
bool StringListInsertString(StringList_s *list, LgIndex_t index, const char *s);
void StringListRemoveString(StringList_s *list, LgIndex_t index);
StringList_s *StringListCopy(const StringList_s *list);
// Appends copies of the source's entries; on failure the target is unchanged.
bool StringListAppend(StringList_s *target, const StringList_s *source);

char *StringListToNLString(const StringList_s *list);
StringList_s *StringListFromNLString(const char *s);
// A newmalloc'd array of StringListCount copies; the caller frees each entry and the array.
char **StringListToArray(const StringList_s *list);
StringList_s *StringListFromArray(const char *const *array, LgIndex_t count);

// Quoted form of a list, read back by StringListFromCompound; see strlist.cpp for the layout.
char *StringListToCompound(const StringList_s *list, char groupJoinChar, const char *charsToEscape);
StringList_s *StringListFromCompound(const char *s);  // null on an unclosed quote

// A null comparator orders by strcmp, a null entry before any string.
void StringListSort(StringList_s *list, StringListStringComparator_pf comparator, ArbParam_t clientData);
