// ArrayList_s: a growable array of items of one fixed type (1 to 8 bytes each), with item
// destructors, duplicators, visitors, sorting and binary search. It is the one container that keeps
// spare capacity, and every item between count and capacity is all zero bytes.
// Relies on: alloc.
#pragma once

#include <cstdint>

#include "base/kernel/types.h"

enum ArrayListType_e {
    ArrayListType_UnsignedChar = 0,
    ArrayListType_UnsignedShort = 1,
    ArrayListType_UnsignedInt = 2,
    ArrayListType_UnsignedLong = 3,
    ArrayListType_Int64 = 4,
    ArrayListType_Char = 5,
    ArrayListType_Short = 6,
    ArrayListType_Int = 7,
    ArrayListType_Long = 8,
    ArrayListType_Float = 9,
    ArrayListType_Double = 10,
    ArrayListType_LgIndex = 11,
    ArrayListType_EntIndex = 12,
    ArrayListType_SmInteger = 13,
    ArrayListType_Boolean = 14,
    ArrayListType_ArbParam = 15,  // an argument kind of ArgList_s, not an item type of a list
    ArrayListType_UnsignedCharPtr = 16,
    ArrayListType_UnsignedShortPtr = 17,
    ArrayListType_UnsignedIntPtr = 18,
    ArrayListType_UnsignedLongPtr = 19,
    ArrayListType_Int64Ptr = 20,
    ArrayListType_CharPtr = 21,  // a string
    ArrayListType_ShortPtr = 22,
    ArrayListType_IntPtr = 23,
    ArrayListType_LongPtr = 24,
    ArrayListType_FloatPtr = 25,
    ArrayListType_DoublePtr = 26,
    ArrayListType_LgIndexPtr = 27,
    ArrayListType_EntIndexPtr = 28,
    ArrayListType_SmIntegerPtr = 29,
    ArrayListType_BooleanPtr = 30,
    ArrayListType_ArbParamPtr = 31,  // an argument kind of ArgList_s, not an item type of a list
    ArrayListType_VoidPtr = 32,
    ArrayListType_FunctionPtr = 33,
    ArrayListType_Any = 34  // the whole item union
};

constexpr int ArrayListNumTypes = 35;

union ArrayListItem_u {
    unsigned char UnsignedChar;
    unsigned short UnsignedShort;
    unsigned int UnsignedInt;
    unsigned long UnsignedLong;
    int64_t Int64;
    char Char;
    short Short;
    int Int;
    long Long;
    float Float;
    double Double;
    LgIndex_t LgIndex;
    EntIndex_t EntIndex;
    SmInteger_t SmInteger;
    Boolean_t Boolean;
    ArbParam_t ArbParam;
    unsigned char *UnsignedCharPtr;
    unsigned short *UnsignedShortPtr;
    unsigned int *UnsignedIntPtr;
    unsigned long *UnsignedLongPtr;
    int64_t *Int64Ptr;
    char *CharPtr;
    short *ShortPtr;
    int *IntPtr;
    long *LongPtr;
    float *FloatPtr;
    double *DoublePtr;
    LgIndex_t *LgIndexPtr;
    EntIndex_t *EntIndexPtr;
    SmInteger_t *SmIntegerPtr;
    Boolean_t *BooleanPtr;
    ArbParam_t *ArbParamPtr;
    void *VoidPtr;
    void (*FunctionPtr)();
};

struct ArrayList_s;

// Gives the capacity to grow to when requestedCapacity items are needed; 0 refuses the growth.
typedef LgIndex_t (*ArrayListCapacityCallback_pf)(const ArrayList_s *list, LgIndex_t currentCapacity,
                                                   LgIndex_t requestedCapacity, ArbParam_t clientData);
// Each receives the address of an item in the list.
typedef bool (*ArrayListItemDestructor_pf)(void *itemRef, ArbParam_t clientData);
typedef bool (*ArrayListItemDuplicator_pf)(void *targetItemRef, const void *sourceItemRef, ArbParam_t clientData);
typedef bool (*ArrayListItemVisitor_pf)(void *itemRef, ArbParam_t clientData);
// Negative, zero or positive as item1 sorts before, with or after item2.
typedef int (*ArrayListItemComparator_pf)(ArrayListItem_u item1, ArrayListItem_u item2, ArbParam_t clientData);

struct ArrayList_s {
    char *array;  // the items, contiguous; null while capacity is 0
    ArrayListType_e type;
    int16_t itemSize;
    LgIndex_t count;
    LgIndex_t capacity;
    bool isVisitingItems;
    ArrayListCapacityCallback_pf capacityCallback;
    ArbParam_t clientData;  // for the capacity callback
};

// Bytes per item of a list type.
int ArrayListItemSizeOfType(ArrayListType_e type);

// The growth rule used when a list is made without a callback of its own.
LgIndex_t ArrayListDefaultCapacityCallback(const ArrayList_s *list, LgIndex_t currentCapacity,
                                           LgIndex_t requestedCapacity, ArbParam_t clientData);

// capacityCallback null means ArrayListDefaultCapacityCallback.
ArrayList_s *ArrayListAlloc(LgIndex_t estimatedCapacity, ArrayListType_e type,
                            ArrayListCapacityCallback_pf capacityCallback, ArbParam_t clientData);
void ArrayListDealloc(ArrayList_s **list, ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData);
bool ArrayListIsValid(const ArrayList_s *list);
ArrayListType_e ArrayListGetType(const ArrayList_s *list);
LgIndex_t ArrayListGetCount(const ArrayList_s *list);
bool ArrayListEnlargeCapacity(ArrayList_s *list, LgIndex_t requestedCapacity);

void ArrayListDeleteAllItems(ArrayList_s *list, ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData);
void ArrayListDeleteItems(ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count,
                          ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData);
void ArrayListDeleteItem(ArrayList_s *list, LgIndex_t itemOffset, ArrayListItemDestructor_pf itemDestructor,
                         ArbParam_t clientData);
// Takes the items out into a new list of the same type without destroying them; null on failure.
ArrayList_s *ArrayListRemoveItems(ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count);
ArrayListItem_u ArrayListRemoveItem(ArrayList_s *list, LgIndex_t itemOffset);

// An offset beyond the count is allowed: the gap is left as all-zero items.
bool ArrayListInsert(ArrayList_s *target, LgIndex_t offset, const ArrayList_s *source);
bool ArrayListInsertItem(ArrayList_s *list, LgIndex_t itemOffset, ArrayListItem_u item);
bool ArrayListSetItem(ArrayList_s *list, LgIndex_t itemOffset, ArrayListItem_u item,
                      ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData);
bool ArrayListAppendItem(ArrayList_s *list, ArrayListItem_u item);
bool ArrayListAppend(ArrayList_s *target, const ArrayList_s *source);

// True if every item was visited, false if the visitor stopped the walk.
bool ArrayListVisitItems(ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count, ArrayListItemVisitor_pf visitor,
                         ArbParam_t clientData);
// A new list holding plain copies of the items; null on failure.
ArrayList_s *ArrayListGetItems(const ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count);
ArrayListItem_u ArrayListGetItem(const ArrayList_s *list, LgIndex_t itemOffset);
// The address of an item, for readers that work in place; valid until the list changes size.
void *ArrayListGetItemRef(const ArrayList_s *list, LgIndex_t itemOffset);

// Without a duplicator the items are copied byte for byte; a duplicator returning false makes the
// whole copy fail.
ArrayList_s *ArrayListCopy(const ArrayList_s *list, ArrayListItemDuplicator_pf itemDuplicator, ArbParam_t clientData);
// A newmalloc'd array of count items (at least one byte is allocated for an empty list).
void *ArrayListToArray(const ArrayList_s *list, ArrayListItemDuplicator_pf itemDuplicator, ArbParam_t clientData);
ArrayList_s *ArrayListFromArray(const void *source, LgIndex_t count, ArrayListType_e type,
                                ArrayListItemDuplicator_pf itemDuplicator, ArbParam_t clientData);

// Not thread-safe; a sort may run inside the comparator of another sort.
void ArrayListSort(ArrayList_s *list, ArrayListItemComparator_pf comparator, ArbParam_t clientData);
// Binary search of a sorted list; the comparator receives (list item, item). itemIndex receives
// the position found, or where the item would be inserted (the count when past the end).
bool ArrayListSearch(const ArrayList_s *list, ArrayListItem_u item, ArrayListItemComparator_pf comparator,
                     ArbParam_t clientData, LgIndex_t *itemIndex);
