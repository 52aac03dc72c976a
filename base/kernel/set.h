// Set_a: a set of small non-negative integers kept as a bit array that grows on demand and never
// shrinks. It is how the system names a selection of zones, variables, maps or frames. A member
// walk starts with -1 and goes on until GetNextMember answers -1 (BADSETVALUE).
// Relies on: alloc (newmalloc/newfree), errors (ErrMsg for the ShowErr cases).
#pragma once

#include <cstdint>

#include "base/kernel/types.h"

struct Set_a {
    SetIndex_t size;  // bits available: a multiple of 64, at least 64
    uint64_t *data;   // bit i of the set is bit (i % 64) of word (i / 64)
};

Set_a *AllocSet(bool showErr);
void DeallocSet(Set_a **set);
// Item destructor for an ArrayList_s of Set_a pointers: itemRef is the address of a Set_a *.
bool SetItemDestructor(void *itemRef, ArbParam_t clientData);

// Makes room for members 0..max-1: the size doubles until it reaches max.
bool ExpandSet(Set_a *set, SetIndex_t max, bool showErr);
bool CopySet(Set_a *dest, const Set_a *src, bool showErr);
bool AppendSet(Set_a *dest, const Set_a *src, bool showErr);
void ClearSet(Set_a *set);
bool AddToSet(Set_a *set, SetIndex_t member, bool showErr);
// Adds the members first..last (both included; nothing when last < first) a word at a time.
bool AddRangeToSet(Set_a *set, SetIndex_t first, SetIndex_t last, bool showErr);
void RemoveFromSet(Set_a *set, SetIndex_t member);

// A member outside 0..size-1 is never in the set; the unsigned compare folds both bounds into one.
inline bool InSet(const Set_a *set, SetIndex_t member) {
    return static_cast<uint64_t>(member) < static_cast<uint64_t>(set->size) &&
           ((set->data[member >> 6] >> (member & 63)) & 1U) != 0;
}

// Renumbering after the deletion or insertion of an entity: members above a deleted one move
// down by one; members at and above an inserted one move up by one and the new one is added.
void DeleteSetMember(Set_a *set, SetIndex_t member);
bool InsertSetMember(Set_a *set, SetIndex_t member, bool showErr);

bool IsEmpty(const Set_a *set);
bool HasVoids(const Set_a *set);
SetIndex_t MemberCount(const Set_a *set);
SetIndex_t GetNextMember(const Set_a *set, SetIndex_t prev);
SetIndex_t GetPrevMember(const Set_a *set, SetIndex_t next);
bool EqualSets(const Set_a *set1, const Set_a *set2);
bool IsSubSet(const Set_a *childSet, const Set_a *parentSet);
SetIndex_t MemberOffset(const Set_a *set, SetIndex_t member);
SetIndex_t OffsetMember(const Set_a *set, SetIndex_t offset);
bool CopySetMember(Set_a *dest, SetIndex_t destMember, const Set_a *src, SetIndex_t srcMember);
// Moves members first..last by shift; the members the moved range passes over fill the positions
// it leaves, so the stretch between the lower and the upper end is rotated.
bool ShiftSet(Set_a *set, SetIndex_t first, SetIndex_t last, SetIndex_t shift);
