// The argument list: four array lists kept in step (names, kinds, values, access flags). The kind
// of an argument is the array-list type code of its value. The list owns the names and string
// values; every other value is held as given.
// Relies on: arrlist, strutil, alloc.
#include "base/kernel/arglist.h"


#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/strutil.h"

struct ArgList_s {
    ArrayList_s *names;     // CharPtr
    ArrayList_s *kinds;     // Int: an ArrayListType_e
    ArrayList_s *values;    // Any: the item union
    ArrayList_s *accessed;  // Boolean
};

namespace {

bool charPtrDestructor(void *itemRef, ArbParam_t /*clientData*/) {
    newfree(*static_cast<char **>(itemRef));
    return true;
}

// Frees the string values; the other kinds of value are not the list's.
void freeStringValues(ArgList_s *argList) {
    for (LgIndex_t i = 0; i < argList->kinds->count; i++) {
        if (ArrayListGetItem(argList->kinds, i).Int == ArrayListType_CharPtr) {
            newfree(ArrayListGetItem(argList->values, i).CharPtr);
        }
    }
}

bool append(ArgList_s *argList, const char *name, ArrayListType_e kind, ArrayListItem_u value) {
    REQUIRE(ArgListIsValid(argList) && name != nullptr);
    LgIndex_t needed = argList->names->count + 1;
    // Room in all four lists first, so that the appends below cannot fail half way.
    if (!ArrayListEnlargeCapacity(argList->names, needed) || !ArrayListEnlargeCapacity(argList->kinds, needed) ||
        !ArrayListEnlargeCapacity(argList->values, needed) || !ArrayListEnlargeCapacity(argList->accessed, needed)) {
        return false;
    }
    ArrayListItem_u nameItem;
    nameItem.CharPtr = DupString(name);
    if (nameItem.CharPtr == nullptr) return false;
    if (kind == ArrayListType_CharPtr && value.CharPtr != nullptr) {
        value.CharPtr = DupString(value.CharPtr);
        if (value.CharPtr == nullptr) {
            newfree(nameItem.CharPtr);
            return false;
        }
    }
    ArrayListItem_u kindItem;
    kindItem.Int = kind;
    ArrayListItem_u accessedItem;
    accessedItem.Boolean = false;
    bool isOk = ArrayListAppendItem(argList->names, nameItem) && ArrayListAppendItem(argList->kinds, kindItem) &&
                ArrayListAppendItem(argList->values, value) && ArrayListAppendItem(argList->accessed, accessedItem);
    CHECK(isOk);
    return isOk;
}

// Finds the first argument of that name and checks its kind; a found one is marked as read.
ArgListGetResult_e find(ArgList_s *argList, const char *name, ArrayListType_e kind, ArrayListItem_u *value) {
    REQUIRE(ArgListIsValid(argList) && name != nullptr && value != nullptr);
    for (LgIndex_t i = 0; i < argList->names->count; i++) {
        if (ustrcmp(ArrayListGetItem(argList->names, i).CharPtr, name) != 0) continue;
        if (ArrayListGetItem(argList->kinds, i).Int != kind) return ArgListGetResult_WrongKind;
        *value = ArrayListGetItem(argList->values, i);
        ArrayListItem_u accessedItem;
        accessedItem.Boolean = true;
        ArrayListSetItem(argList->accessed, i, accessedItem, nullptr, 0);
        return ArgListGetResult_Found;
    }
    return ArgListGetResult_NotFound;
}

}  // namespace

ArgList_s *ArgListAlloc() {
    auto *argList = static_cast<ArgList_s *>(newmalloc(sizeof(ArgList_s)));
    if (argList == nullptr) return nullptr;
    argList->names = ArrayListAlloc(0, ArrayListType_CharPtr, nullptr, 0);
    argList->kinds = ArrayListAlloc(0, ArrayListType_Int, nullptr, 0);
    argList->values = ArrayListAlloc(0, ArrayListType_Any, nullptr, 0);
    argList->accessed = ArrayListAlloc(0, ArrayListType_Boolean, nullptr, 0);
    if (argList->names == nullptr || argList->kinds == nullptr || argList->values == nullptr ||
        argList->accessed == nullptr) {
        ArgListDealloc(&argList);
    }
    return argList;
}

void ArgListDealloc(ArgList_s **argList) {
    REQUIRE(argList != nullptr);
    if (*argList == nullptr) return;
    if (ArgListIsValid(*argList)) freeStringValues(*argList);
    ArrayListDealloc(&(*argList)->names, charPtrDestructor, 0);
    ArrayListDealloc(&(*argList)->kinds, nullptr, 0);
    ArrayListDealloc(&(*argList)->values, nullptr, 0);
    ArrayListDealloc(&(*argList)->accessed, nullptr, 0);
    newfree(*argList);
    *argList = nullptr;
}

bool ArgListIsValid(const ArgList_s *argList) {
    if (argList == nullptr) return false;
    const ArrayList_s *lists[] = {argList->names, argList->kinds, argList->values, argList->accessed};
    for (const ArrayList_s *list : lists) {
        if (!ArrayListIsValid(list) || list->count != argList->names->count) return false;
    }
    return argList->names->type == ArrayListType_CharPtr && argList->kinds->type == ArrayListType_Int &&
           argList->values->type == ArrayListType_Any && argList->accessed->type == ArrayListType_Boolean;
}

void ArgListClear(ArgList_s *argList) {
    REQUIRE(ArgListIsValid(argList));
    freeStringValues(argList);
    ArrayListDeleteAllItems(argList->names, charPtrDestructor, 0);
    ArrayListDeleteAllItems(argList->kinds, nullptr, 0);
    ArrayListDeleteAllItems(argList->values, nullptr, 0);
    ArrayListDeleteAllItems(argList->accessed, nullptr, 0);
}

LgIndex_t ArgListGetCount(const ArgList_s *argList) {
    REQUIRE(ArgListIsValid(argList));
    return argList->names->count;
}

LgIndex_t ArgListGetAccessCount(const ArgList_s *argList) {
    REQUIRE(ArgListIsValid(argList));
    LgIndex_t count = 0;
    for (LgIndex_t i = 0; i < argList->accessed->count; i++) {
        if (ArrayListGetItem(argList->accessed, i).Boolean) count++;
    }
    return count;
}

bool ArgListAppendArbParam(ArgList_s *argList, const char *name, ArbParam_t value) {
    ArrayListItem_u item;
    item.ArbParam = value;
    return append(argList, name, ArrayListType_ArbParam, item);
}

bool ArgListAppendArbParamPtr(ArgList_s *argList, const char *name, ArbParam_t *value) {
    ArrayListItem_u item;
    item.ArbParamPtr = value;
    return append(argList, name, ArrayListType_ArbParamPtr, item);
}

bool ArgListAppendLgIndex(ArgList_s *argList, const char *name, LgIndex_t value) {
    ArrayListItem_u item;
    item.Int64 = 0;
    item.LgIndex = value;
    return append(argList, name, ArrayListType_LgIndex, item);
}

bool ArgListAppendDouble(ArgList_s *argList, const char *name, double value) {
    ArrayListItem_u item;
    item.Double = value;
    return append(argList, name, ArrayListType_Double, item);
}

bool ArgListAppendDoublePtr(ArgList_s *argList, const char *name, double *value) {
    ArrayListItem_u item;
    item.DoublePtr = value;
    return append(argList, name, ArrayListType_DoublePtr, item);
}

bool ArgListAppendString(ArgList_s *argList, const char *name, const char *value) {
    ArrayListItem_u item;
    item.CharPtr = const_cast<char *>(value);  // append stores a copy
    return append(argList, name, ArrayListType_CharPtr, item);
}

bool ArgListAppendRef(ArgList_s *argList, const char *name, void *value) {
    ArrayListItem_u item;
    item.VoidPtr = value;
    return append(argList, name, ArrayListType_VoidPtr, item);
}

// A lookup of one kind: the value is copied out of the item's member when found.
template <typename T>
static ArgListGetResult_e getTyped(ArgList_s *argList, const char *name, ArrayListType_e type,
                                   T ArrayListItem_u::*member, T *value) {
    ArrayListItem_u item;
    ArgListGetResult_e result = find(argList, name, type, &item);
    if (result == ArgListGetResult_Found) *value = item.*member;
    return result;
}

ArgListGetResult_e ArgListGetArbParam(ArgList_s *argList, const char *name, ArbParam_t *value) {
    return getTyped(argList, name, ArrayListType_ArbParam, &ArrayListItem_u::ArbParam, value);
}

ArgListGetResult_e ArgListGetArbParamPtr(ArgList_s *argList, const char *name, ArbParam_t **value) {
    return getTyped(argList, name, ArrayListType_ArbParamPtr, &ArrayListItem_u::ArbParamPtr, value);
}

ArgListGetResult_e ArgListGetLgIndex(ArgList_s *argList, const char *name, LgIndex_t *value) {
    return getTyped(argList, name, ArrayListType_LgIndex, &ArrayListItem_u::LgIndex, value);
}

ArgListGetResult_e ArgListGetDouble(ArgList_s *argList, const char *name, double *value) {
    return getTyped(argList, name, ArrayListType_Double, &ArrayListItem_u::Double, value);
}

ArgListGetResult_e ArgListGetDoublePtr(ArgList_s *argList, const char *name, double **value) {
    return getTyped(argList, name, ArrayListType_DoublePtr, &ArrayListItem_u::DoublePtr, value);
}

ArgListGetResult_e ArgListGetString(ArgList_s *argList, const char *name, char **value) {
    ArrayListItem_u item;
    ArgListGetResult_e result = find(argList, name, ArrayListType_CharPtr, &item);
    if (result == ArgListGetResult_Found) *value = DupString(item.CharPtr);
    return result;
}

ArgListGetResult_e ArgListGetRef(ArgList_s *argList, const char *name, void **value) {
    return getTyped(argList, name, ArrayListType_VoidPtr, &ArrayListItem_u::VoidPtr, value);
}
