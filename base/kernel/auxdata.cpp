// The auxiliary-data map: an array list of pointers to item records, kept sorted by name under
// ustrcmp so that lookups are binary searches. Every item owns its name and, for the string type,
// its value.
// Relies on: arrlist, strutil, alloc.
#include "base/kernel/auxdata.h"


#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/strutil.h"

struct AuxData_s {
    ArrayList_s *itemList;  // VoidPtr items, each an AuxDataItem_s *
};

namespace {

struct AuxDataItem_s {
    char *Name;
    ArbParam_t Value;
    AuxDataType_e Type;
    Boolean_t Retain;
};

inline const AuxDataItem_s *itemAt(const AuxData_s *auxData, LgIndex_t index) {
    return static_cast<const AuxDataItem_s *>(ArrayListGetItem(auxData->itemList, index).VoidPtr);
}

inline ArrayListItem_u itemOf(AuxDataItem_s *item) {
    ArrayListItem_u listItem;
    listItem.VoidPtr = item;
    return listItem;
}

void freeItem(AuxDataItem_s *item) {
    if (item == nullptr) return;
    newfree(item->Name);
    if (item->Type == AuxDataType_String) newfree(reinterpret_cast<char *>(item->Value));
    newfree(item);
}

// A new item holding copies of the name and of a string value; null on out of memory.
AuxDataItem_s *makeItem(const char *name, ArbParam_t value, AuxDataType_e type, bool retain) {
    auto *item = static_cast<AuxDataItem_s *>(newmalloc(sizeof(AuxDataItem_s)));
    if (item == nullptr) return nullptr;
    item->Type = type;
    item->Retain = retain;
    item->Value = 0;
    item->Name = DupString(name);
    bool isOk = item->Name != nullptr;
    if (isOk && type == AuxDataType_String) {
        const char *text = reinterpret_cast<const char *>(value);
        char *copy = DupString(text);
        isOk = text == nullptr || copy != nullptr;
        item->Value = reinterpret_cast<ArbParam_t>(copy);
    } else {
        item->Value = value;
    }
    if (!isOk) {
        freeItem(item);
        return nullptr;
    }
    return item;
}

int compareItemNames(ArrayListItem_u item1, ArrayListItem_u item2, ArbParam_t /*clientData*/) {
    return ustrcmp(static_cast<const AuxDataItem_s *>(item1.VoidPtr)->Name,
                   static_cast<const AuxDataItem_s *>(item2.VoidPtr)->Name);
}

inline bool isValidMap(const AuxData_s *auxData) {
    return auxData != nullptr && ArrayListIsValid(auxData->itemList) && auxData->itemList->type == ArrayListType_VoidPtr;
}

}  // namespace

AuxData_s *AuxDataAlloc() {
    auto *auxData = static_cast<AuxData_s *>(newmalloc(sizeof(AuxData_s)));
    if (auxData == nullptr) return nullptr;
    auxData->itemList = ArrayListAlloc(0, ArrayListType_VoidPtr, nullptr, 0);
    if (auxData->itemList == nullptr) {
        newfree(auxData);
        return nullptr;
    }
    return auxData;
}

void AuxDataDealloc(AuxData_s **auxData) {
    REQUIRE(auxData != nullptr);
    if (*auxData == nullptr) return;
    ArrayListDealloc(&(*auxData)->itemList, AuxDataItemDestructor, 0);
    newfree(*auxData);
    *auxData = nullptr;
}

bool AuxDataItemDestructor(void *itemRef, ArbParam_t /*clientData*/) {
    REQUIRE(itemRef != nullptr);
    auto **item = static_cast<AuxDataItem_s **>(itemRef);
    freeItem(*item);
    *item = nullptr;
    return true;
}

AuxData_s *AuxDataCopy(const AuxData_s *source, bool considerRetain) {
    REQUIRE(isValidMap(source));
    AuxData_s *copy = AuxDataAlloc();
    if (copy == nullptr) return nullptr;
    // The source is sorted, and so is any selection of it: items go straight to the end.
    for (LgIndex_t i = 0; i < source->itemList->count; i++) {
        const AuxDataItem_s *item = itemAt(source, i);
        if (considerRetain && !item->Retain) continue;
        AuxDataItem_s *itemCopy = makeItem(item->Name, item->Value, item->Type, item->Retain);
        if (itemCopy == nullptr || !ArrayListAppendItem(copy->itemList, itemOf(itemCopy))) {
            freeItem(itemCopy);
            AuxDataDealloc(&copy);
            return nullptr;
        }
    }
    return copy;
}

LgIndex_t AuxDataGetNumItems(const AuxData_s *auxData) {
    REQUIRE(isValidMap(auxData));
    return auxData->itemList->count;
}

bool AuxDataGetItemIndex(const AuxData_s *auxData, const char *name, LgIndex_t *itemIndex) {
    REQUIRE(isValidMap(auxData) && name != nullptr && itemIndex != nullptr);
    AuxDataItem_s key = {const_cast<char *>(name), 0, AuxDataType_String, false};
    return ArrayListSearch(auxData->itemList, itemOf(&key), compareItemNames, 0, itemIndex);
}

void AuxDataGetItemByIndex(const AuxData_s *auxData, LgIndex_t index, const char **name, ArbParam_t *value,
                           AuxDataType_e *type, bool *retain) {
    REQUIRE(isValidMap(auxData) && index >= 0 && index < auxData->itemList->count);
    const AuxDataItem_s *item = itemAt(auxData, index);
    if (name != nullptr) *name = item->Name;
    if (value != nullptr) *value = item->Value;
    if (type != nullptr) *type = item->Type;
    if (retain != nullptr) *retain = item->Retain;
}

bool AuxDataGetItemByName(const AuxData_s *auxData, const char *name, ArbParam_t *value, AuxDataType_e *type,
                          bool *retain) {
    LgIndex_t index;
    if (!AuxDataGetItemIndex(auxData, name, &index)) return false;
    AuxDataGetItemByIndex(auxData, index, nullptr, value, type, retain);
    return true;
}

bool AuxDataGetBooleanItemByName(const AuxData_s *auxData, const char *name, bool *value, AuxDataType_e *type,
                                 bool *retain) {
    REQUIRE(value != nullptr);
    *value = false;
    ArbParam_t itemValue;
    AuxDataType_e itemType;
    if (!AuxDataGetItemByName(auxData, name, &itemValue, &itemType, retain)) return false;
    if (type != nullptr) *type = itemType;
    if (itemType == AuxDataType_String) {
        static const char *const trueWords[] = {"YES", "YEP", "Y", "TRUE", "T", "ON", "1"};
        const char *text = reinterpret_cast<const char *>(itemValue);
        for (const char *word : trueWords) {
            if (text != nullptr && ustrcmp(text, word) == 0) *value = true;
        }
    }
    return true;
}

bool AuxDataSetItem(AuxData_s *auxData, const char *name, ArbParam_t value, AuxDataType_e type, bool retain) {
    REQUIRE(isValidMap(auxData) && AuxDataIsValidName(name) && type == AuxDataType_String);
    AuxDataItem_s *item = makeItem(name, value, type, retain);
    if (item == nullptr) return false;
    LgIndex_t index;
    bool isOk;
    if (AuxDataGetItemIndex(auxData, name, &index)) {
        isOk = ArrayListSetItem(auxData->itemList, index, itemOf(item), AuxDataItemDestructor, 0);
    } else {
        isOk = ArrayListInsertItem(auxData->itemList, index, itemOf(item));
    }
    if (!isOk) freeItem(item);
    return isOk;
}

void AuxDataDeleteItemByIndex(AuxData_s *auxData, LgIndex_t index) {
    REQUIRE(isValidMap(auxData) && index >= 0 && index < auxData->itemList->count);
    ArrayListDeleteItem(auxData->itemList, index, AuxDataItemDestructor, 0);
}

bool AuxDataDeleteItemByName(AuxData_s *auxData, const char *name) {
    LgIndex_t index;
    if (!AuxDataGetItemIndex(auxData, name, &index)) return false;
    AuxDataDeleteItemByIndex(auxData, index);
    return true;
}

bool AuxDataAppendItems(AuxData_s *target, const AuxData_s *source) {
    REQUIRE(isValidMap(target) && isValidMap(source));
    // Work on a copy and exchange the item lists only when every item went in.
    AuxData_s *work = AuxDataCopy(target, false);
    if (work == nullptr) return false;
    for (LgIndex_t i = 0; i < source->itemList->count; i++) {
        const AuxDataItem_s *item = itemAt(source, i);
        if (!AuxDataSetItem(work, item->Name, item->Value, item->Type, item->Retain)) {
            AuxDataDealloc(&work);
            return false;
        }
    }
    ArrayList_s *oldItems = target->itemList;
    target->itemList = work->itemList;
    work->itemList = oldItems;
    AuxDataDealloc(&work);
    return true;
}

bool AuxDataIsValidNameChar(char c, bool isLeadChar) {
    bool isLetter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (isLetter || c == '_') return true;
    return !isLeadChar && ((c >= '0' && c <= '9') || c == '.');
}

bool AuxDataIsValidName(const char *name) {
    if (name == nullptr || *name == '\0') return false;
    for (const char *c = name; *c != '\0'; c++) {
        if (!AuxDataIsValidNameChar(*c, c == name)) return false;
    }
    return true;
}

void AuxDataVisitRetainedItems(const AuxData_s *auxData, void (*visit)(const char *name, const char *value, void *clientData),
                               void *clientData) {
    for (LgIndex_t n = 0; auxData != nullptr && n < AuxDataGetNumItems(auxData); n++) {
        const char *name;
        ArbParam_t value;
        AuxDataType_e type;
        bool retain;
        AuxDataGetItemByIndex(auxData, n, &name, &value, &type, &retain);
        if (retain) visit(name, reinterpret_cast<const char *>(value), clientData);
    }
}
