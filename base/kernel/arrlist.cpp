// The typed growable array. Items move with memmove (which picks the safe direction for overlapping
// stretches), and every operation that frees a stretch zero-fills it, so that the items between
// count and capacity are always all zero: a list grown by setting an item past the end then holds
// zero items in the gap without further work.
// Relies on: alloc.
#include "base/kernel/arrlist.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/orvassert.h"

static_assert(sizeof(ArrayListItem_u) == 8, "an item union is 8 bytes");

namespace {

constexpr int16_t kItemSizes[ArrayListNumTypes] = {
    1, 2, 4, 8, 8,  // 0 unsigned char .. 4 int64
    1, 2, 4, 8,     // 5 char .. 8 long
    4, 8,           // 9 float, 10 double
    4, 2, 2, 1,     // 11 LgIndex_t, 12 EntIndex_t, 13 SmInteger_t, 14 Boolean_t
    8,              // 15 ArbParam_t
    8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8,  // 16..30 pointers
    8,              // 31 pointer to ArbParam_t
    8, 8, 8         // 32 generic pointer, 33 function pointer, 34 item union
};

constexpr LgIndex_t kMinCapacityBlock = 32;

inline char *itemAddress(const ArrayList_s *list, LgIndex_t offset) {
    return list->array + static_cast<size_t>(offset) * static_cast<size_t>(list->itemSize);
}

inline size_t byteCount(const ArrayList_s *list, LgIndex_t items) {
    return static_cast<size_t>(items) * static_cast<size_t>(list->itemSize);
}

inline void writeItem(ArrayList_s *list, LgIndex_t offset, const ArrayListItem_u &item) {
    memcpy(itemAddress(list, offset), &item, static_cast<size_t>(list->itemSize));
}

inline ArrayListItem_u readItem(const void *address, int itemSize) {
    ArrayListItem_u item;
    memset(&item, 0, sizeof(item));
    memcpy(&item, address, static_cast<size_t>(itemSize));
    return item;
}

// The end of a stretch that starts at offset and holds count items, or -1 past the index limit.
inline LgIndex_t stretchEnd(LgIndex_t offset, LgIndex_t count) {
    int64_t end = int64_t(offset) + int64_t(count);
    return end > MAXINDEX ? -1 : static_cast<LgIndex_t>(end);
}

// Makes room for count items at offset: the items from offset up move up by count, and an offset
// past the end leaves a zero gap. The new items themselves are not yet written.
bool openGap(ArrayList_s *list, LgIndex_t offset, LgIndex_t count) {
    LgIndex_t newCount = stretchEnd(std::max(list->count, offset), count);
    if (newCount < 0 || !ArrayListEnlargeCapacity(list, newCount)) return false;
    if (offset < list->count) {
        memmove(itemAddress(list, offset + count), itemAddress(list, offset), byteCount(list, list->count - offset));
    }
    list->count = newCount;
    return true;
}

// The sort's comparator state; saved and restored around each sort so that nested sorts work.
ArrayListItemComparator_pf sortComparator = nullptr;
ArbParam_t sortClientData = 0;
int sortItemSize = 0;

int qsortCompare(const void *item1, const void *item2) {
    return sortComparator(readItem(item1, sortItemSize), readItem(item2, sortItemSize), sortClientData);
}

}  // namespace

int ArrayListItemSizeOfType(ArrayListType_e type) {
    REQUIRE(type >= 0 && type < ArrayListNumTypes);
    return kItemSizes[type];
}

LgIndex_t ArrayListDefaultCapacityCallback(const ArrayList_s * /*list*/, LgIndex_t currentCapacity,
                                           LgIndex_t requestedCapacity, ArbParam_t /*clientData*/) {
    if (currentCapacity == 0 && requestedCapacity != 0) return requestedCapacity;
    if (requestedCapacity == 0) return kMinCapacityBlock;
    // Grow by at least half the capacity, in blocks of at least 32 items.
    int64_t block = std::max<int64_t>(currentCapacity / 2, kMinCapacityBlock);
    int64_t capacity = ((int64_t(requestedCapacity) - 1) / block + 1) * block;
    return static_cast<LgIndex_t>(std::min<int64_t>(capacity, std::max(MAXINDEX, requestedCapacity)));
}

ArrayList_s *ArrayListAlloc(LgIndex_t estimatedCapacity, ArrayListType_e type,
                            ArrayListCapacityCallback_pf capacityCallback, ArbParam_t clientData) {
    REQUIRE(estimatedCapacity >= 0);
    REQUIRE(type >= 0 && type < ArrayListNumTypes && type != ArrayListType_ArbParam &&
            type != ArrayListType_ArbParamPtr);
    auto *list = static_cast<ArrayList_s *>(newmalloc(sizeof(ArrayList_s)));
    if (list == nullptr) return nullptr;
    list->array = nullptr;
    list->type = type;
    list->itemSize = kItemSizes[type];
    list->count = 0;
    list->capacity = 0;
    list->isVisitingItems = false;
    list->capacityCallback = capacityCallback != nullptr ? capacityCallback : ArrayListDefaultCapacityCallback;
    list->clientData = clientData;

    // The callback is asked even for an estimate of 0, so a default list starts with 32 items.
    LgIndex_t capacity = list->capacityCallback(list, 0, estimatedCapacity, clientData);
    if (capacity > 0) {
        list->array = static_cast<char *>(newmalloc(byteCount(list, capacity)));
        if (list->array == nullptr) {
            newfree(list);
            return nullptr;
        }
        memset(list->array, 0, byteCount(list, capacity));
        list->capacity = capacity;
    }
    return list;
}

void ArrayListDealloc(ArrayList_s **list, ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData) {
    REQUIRE(list != nullptr);
    if (*list == nullptr) return;
    REQUIRE(ArrayListIsValid(*list));
    if (itemDestructor != nullptr) {
        for (LgIndex_t i = 0; i < (*list)->count; i++) itemDestructor(itemAddress(*list, i), clientData);
    }
    newfree((*list)->array);
    newfree(*list);
    *list = nullptr;
}

bool ArrayListIsValid(const ArrayList_s *list) {
    return list != nullptr && list->type >= 0 && list->type < ArrayListNumTypes && list->itemSize >= 1 &&
           list->itemSize <= 8 && list->count >= 0 && list->count <= list->capacity &&
           (list->capacity == 0 || list->array != nullptr);
}

ArrayListType_e ArrayListGetType(const ArrayList_s *list) {
    REQUIRE(ArrayListIsValid(list));
    return list->type;
}

LgIndex_t ArrayListGetCount(const ArrayList_s *list) {
    REQUIRE(ArrayListIsValid(list));
    return list->count;
}

bool ArrayListEnlargeCapacity(ArrayList_s *list, LgIndex_t requestedCapacity) {
    REQUIRE(ArrayListIsValid(list));
    if (requestedCapacity <= list->capacity) return true;
    LgIndex_t capacity = list->capacityCallback(list, list->capacity, requestedCapacity, list->clientData);
    if (capacity < requestedCapacity) return false;  // 0 is a refusal; less would not hold the items

    auto *array = static_cast<char *>(newmalloc(byteCount(list, capacity)));
    if (array == nullptr && capacity > requestedCapacity) {
        // The generous size did not fit; settle for exactly what was asked.
        capacity = requestedCapacity;
        array = static_cast<char *>(newmalloc(byteCount(list, capacity)));
    }
    if (array == nullptr) return false;
    if (list->count > 0) memcpy(array, list->array, byteCount(list, list->count));
    memset(array + byteCount(list, list->count), 0, byteCount(list, capacity - list->count));
    newfree(list->array);
    list->array = array;
    list->capacity = capacity;
    return true;
}

void ArrayListDeleteAllItems(ArrayList_s *list, ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list) && !list->isVisitingItems);
    if (list->count > 0) ArrayListDeleteItems(list, 0, list->count, itemDestructor, clientData);
}

void ArrayListDeleteItems(ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count,
                          ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list) && !list->isVisitingItems);
    REQUIRE(itemOffset >= 0 && count >= 0 && int64_t(itemOffset) + count <= list->count);
    if (count == 0) return;
    if (itemDestructor != nullptr) {
        for (LgIndex_t i = itemOffset; i < itemOffset + count; i++) itemDestructor(itemAddress(list, i), clientData);
    }
    LgIndex_t tail = list->count - (itemOffset + count);
    if (tail > 0) memmove(itemAddress(list, itemOffset), itemAddress(list, itemOffset + count), byteCount(list, tail));
    list->count -= count;
    memset(itemAddress(list, list->count), 0, byteCount(list, count));
}

void ArrayListDeleteItem(ArrayList_s *list, LgIndex_t itemOffset, ArrayListItemDestructor_pf itemDestructor,
                         ArbParam_t clientData) {
    ArrayListDeleteItems(list, itemOffset, 1, itemDestructor, clientData);
}

ArrayList_s *ArrayListRemoveItems(ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count) {
    ArrayList_s *removed = ArrayListGetItems(list, itemOffset, count);
    if (removed != nullptr) ArrayListDeleteItems(list, itemOffset, count, nullptr, 0);
    return removed;
}

ArrayListItem_u ArrayListRemoveItem(ArrayList_s *list, LgIndex_t itemOffset) {
    ArrayListItem_u item = ArrayListGetItem(list, itemOffset);
    ArrayListDeleteItems(list, itemOffset, 1, nullptr, 0);
    return item;
}

bool ArrayListInsert(ArrayList_s *target, LgIndex_t offset, const ArrayList_s *source) {
    REQUIRE(ArrayListIsValid(target) && ArrayListIsValid(source) && !target->isVisitingItems);
    REQUIRE(target->type == source->type && offset >= 0);
    if (target == source) {
        // Inserting a list into itself: take the items out first, as opening the gap moves them.
        ArrayList_s *copy = ArrayListGetItems(source, 0, source->count);
        if (copy == nullptr) return false;
        bool isOk = ArrayListInsert(target, offset, copy);
        ArrayListDealloc(&copy, nullptr, 0);
        return isOk;
    }
    if (source->count == 0) {
        // Nothing to insert, but an offset past the end still extends the list up to it.
        return offset <= target->count || openGap(target, offset, 0);
    }
    if (!openGap(target, offset, source->count)) return false;
    memcpy(itemAddress(target, offset), source->array, byteCount(source, source->count));
    return true;
}

bool ArrayListInsertItem(ArrayList_s *list, LgIndex_t itemOffset, ArrayListItem_u item) {
    REQUIRE(ArrayListIsValid(list) && !list->isVisitingItems && itemOffset >= 0);
    if (!openGap(list, itemOffset, 1)) return false;
    writeItem(list, itemOffset, item);
    return true;
}

bool ArrayListSetItem(ArrayList_s *list, LgIndex_t itemOffset, ArrayListItem_u item,
                      ArrayListItemDestructor_pf itemDestructor, ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list) && itemOffset >= 0);
    if (itemOffset < list->count) {
        if (itemDestructor != nullptr) itemDestructor(itemAddress(list, itemOffset), clientData);
    } else {
        REQUIRE(!list->isVisitingItems);
        LgIndex_t newCount = stretchEnd(itemOffset, 1);
        if (newCount < 0 || !ArrayListEnlargeCapacity(list, newCount)) return false;
        list->count = newCount;  // the items of the gap are zero already
    }
    writeItem(list, itemOffset, item);
    return true;
}

bool ArrayListAppendItem(ArrayList_s *list, ArrayListItem_u item) {
    REQUIRE(ArrayListIsValid(list));
    return ArrayListInsertItem(list, list->count, item);
}

bool ArrayListAppend(ArrayList_s *target, const ArrayList_s *source) {
    REQUIRE(ArrayListIsValid(target));
    return ArrayListInsert(target, target->count, source);
}

bool ArrayListVisitItems(ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count, ArrayListItemVisitor_pf visitor,
                         ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list) && visitor != nullptr);
    REQUIRE(itemOffset >= 0 && count >= 0 && int64_t(itemOffset) + count <= list->count);
    bool wasVisiting = list->isVisitingItems;
    list->isVisitingItems = true;
    bool isOk = true;
    for (LgIndex_t i = itemOffset; isOk && i < itemOffset + count; i++) isOk = visitor(itemAddress(list, i), clientData);
    list->isVisitingItems = wasVisiting;
    return isOk;
}

ArrayList_s *ArrayListGetItems(const ArrayList_s *list, LgIndex_t itemOffset, LgIndex_t count) {
    REQUIRE(ArrayListIsValid(list));
    REQUIRE(itemOffset >= 0 && count >= 0 && int64_t(itemOffset) + count <= list->count);
    ArrayList_s *items = ArrayListAlloc(count, list->type, list->capacityCallback, list->clientData);
    if (items == nullptr) return nullptr;
    if (count > 0) {
        if (!ArrayListEnlargeCapacity(items, count)) {
            ArrayListDealloc(&items, nullptr, 0);
            return nullptr;
        }
        memcpy(items->array, itemAddress(list, itemOffset), byteCount(list, count));
        items->count = count;
    }
    return items;
}

ArrayListItem_u ArrayListGetItem(const ArrayList_s *list, LgIndex_t itemOffset) {
    REQUIRE(ArrayListIsValid(list) && itemOffset >= 0 && itemOffset < list->count);
    return readItem(itemAddress(list, itemOffset), list->itemSize);
}

void *ArrayListGetItemRef(const ArrayList_s *list, LgIndex_t itemOffset) {
    REQUIRE(ArrayListIsValid(list) && itemOffset >= 0 && itemOffset < list->count);
    return itemAddress(list, itemOffset);
}

ArrayList_s *ArrayListCopy(const ArrayList_s *list, ArrayListItemDuplicator_pf itemDuplicator, ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list));
    ArrayList_s *copy = ArrayListGetItems(list, 0, list->count);
    if (copy == nullptr || itemDuplicator == nullptr) return copy;
    // The duplicator fills each target item from a zeroed start.
    memset(copy->array, 0, byteCount(copy, copy->count));
    for (LgIndex_t i = 0; i < list->count; i++) {
        if (!itemDuplicator(itemAddress(copy, i), itemAddress(list, i), clientData)) {
            ArrayListDealloc(&copy, nullptr, 0);
            return nullptr;
        }
    }
    return copy;
}

void *ArrayListToArray(const ArrayList_s *list, ArrayListItemDuplicator_pf itemDuplicator, ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list));
    size_t bytes = std::max<size_t>(byteCount(list, list->count), 1);
    auto *array = static_cast<char *>(newmalloc(bytes));
    if (array == nullptr) return nullptr;
    memset(array, 0, bytes);
    if (itemDuplicator == nullptr) {
        if (list->count > 0) memcpy(array, list->array, byteCount(list, list->count));
        return array;
    }
    for (LgIndex_t i = 0; i < list->count; i++) {
        if (!itemDuplicator(array + byteCount(list, i), itemAddress(list, i), clientData)) {
            newfree(array);
            return nullptr;
        }
    }
    return array;
}

ArrayList_s *ArrayListFromArray(const void *source, LgIndex_t count, ArrayListType_e type,
                                ArrayListItemDuplicator_pf itemDuplicator, ArbParam_t clientData) {
    REQUIRE(count >= 0 && (count == 0 || source != nullptr));
    ArrayList_s *list = ArrayListAlloc(count, type, nullptr, 0);
    if (list == nullptr) return nullptr;
    if (count == 0) return list;
    if (!ArrayListEnlargeCapacity(list, count)) {
        ArrayListDealloc(&list, nullptr, 0);
        return nullptr;
    }
    const char *items = static_cast<const char *>(source);
    if (itemDuplicator == nullptr) {
        memcpy(list->array, items, byteCount(list, count));
    } else {
        for (LgIndex_t i = 0; i < count; i++) {
            if (!itemDuplicator(itemAddress(list, i), items + byteCount(list, i), clientData)) {
                ArrayListDealloc(&list, nullptr, 0);
                return nullptr;
            }
        }
    }
    list->count = count;
    return list;
}

void ArrayListSort(ArrayList_s *list, ArrayListItemComparator_pf comparator, ArbParam_t clientData) {
    REQUIRE(ArrayListIsValid(list) && comparator != nullptr);
    if (list->count < 2) return;
    ArrayListItemComparator_pf savedComparator = sortComparator;
    ArbParam_t savedClientData = sortClientData;
    int savedItemSize = sortItemSize;
    sortComparator = comparator;
    sortClientData = clientData;
    sortItemSize = list->itemSize;
    qsort(list->array, static_cast<size_t>(list->count), static_cast<size_t>(list->itemSize), qsortCompare);
    sortComparator = savedComparator;
    sortClientData = savedClientData;
    sortItemSize = savedItemSize;
}

bool ArrayListSearch(const ArrayList_s *list, ArrayListItem_u item, ArrayListItemComparator_pf comparator,
                     ArbParam_t clientData, LgIndex_t *itemIndex) {
    REQUIRE(ArrayListIsValid(list) && comparator != nullptr);
    LgIndex_t lower = 0;
    LgIndex_t upper = list->count - 1;
    while (lower <= upper) {
        LgIndex_t middle = lower + (upper - lower) / 2;
        int result = comparator(readItem(itemAddress(list, middle), list->itemSize), item, clientData);
        if (result > 0) {
            upper = middle - 1;
        } else if (result < 0) {
            lower = middle + 1;
        } else {
            if (itemIndex != nullptr) *itemIndex = middle;
            return true;
        }
    }
    // lower is where the item would go in; past the end it is the count.
    if (itemIndex != nullptr) *itemIndex = lower;
    return false;
}
