// Host tables: insertion-ordered hash maps from expressions to expressions, with an
// open-addressed index (linear probing) over the entry arrays.
#include "host/nodes.h"

namespace vexa {

namespace {

TableNode* CheckTable(ALGEB t) {
  if (!IsTable(t)) RaiseExpected("a table", t);
  return AsTable(t);
}

// Slot of key in the index, or of the empty slot where it would go.
uint32_t FindSlot(const TableNode* t, ALGEB key, size_t hash, bool* found) {
  uint32_t mask = 2 * t->capacity - 1;
  uint32_t firstFree = UINT32_MAX;
  for (uint32_t i = static_cast<uint32_t>(hash) & mask;; i = (i + 1) & mask) {
    int32_t slot = t->index[i];
    if (slot == 0) {
      *found = false;
      return firstFree != UINT32_MAX ? firstFree : i;
    }
    if (slot < 0) {
      if (firstFree == UINT32_MAX) firstFree = i;
      continue;
    }
    if (Equal(t->keys[slot - 1], key)) {
      *found = true;
      return i;
    }
  }
}

void Grow(TableNode* t) {
  uint32_t capacity = t->capacity * 2;
  ALGEB* keys = static_cast<ALGEB*>(AllocScanned(sizeof(ALGEB) * capacity));
  ALGEB* values = static_cast<ALGEB*>(AllocScanned(sizeof(ALGEB) * capacity));
  int32_t* index = static_cast<int32_t*>(AllocAtomic(sizeof(int32_t) * 2 * capacity));
  std::fill(index, index + 2 * capacity, 0);
  uint32_t n = 0;
  for (uint32_t i = 0; i < t->count; ++i) {
    if (t->keys[i] == nullptr) continue;
    keys[n] = t->keys[i];
    values[n] = t->values[i];
    ++n;
  }
  t->keys = keys;
  t->values = values;
  t->index = index;
  t->capacity = capacity;
  t->count = n;
  for (uint32_t i = 0; i < n; ++i) {
    bool found;
    index[FindSlot(t, keys[i], Hash(keys[i]), &found)] = static_cast<int32_t>(i + 1);
  }
}

}  // namespace

ALGEB NewTable() {
  TableNode* t = static_cast<TableNode*>(AllocScanned(sizeof(TableNode)));
  t->header = MakeHeader(kTableNode);
  t->count = t->live = 0;
  t->capacity = 4;
  t->keys = static_cast<ALGEB*>(AllocScanned(sizeof(ALGEB) * 4));
  t->values = static_cast<ALGEB*>(AllocScanned(sizeof(ALGEB) * 4));
  t->index = static_cast<int32_t*>(AllocAtomic(sizeof(int32_t) * 8));
  std::fill(t->index, t->index + 8, 0);
  return reinterpret_cast<ALGEB>(t);
}

ALGEB TableGet(ALGEB table, ALGEB key) {
  TableNode* t = CheckTable(table);
  bool found;
  uint32_t i = FindSlot(t, key, Hash(key), &found);
  return found ? t->values[t->index[i] - 1] : nullptr;
}

void TablePut(ALGEB table, ALGEB key, ALGEB value) {
  TableNode* t = CheckTable(table);
  if (key == nullptr || value == nullptr) Raise("internal error: null table key or value");
  bool found;
  size_t h = Hash(key);
  uint32_t i = FindSlot(t, key, h, &found);
  if (found) {
    t->values[t->index[i] - 1] = value;
    return;
  }
  if (t->count == t->capacity) {
    Grow(t);
    i = FindSlot(t, key, h, &found);
  }
  t->keys[t->count] = key;
  t->values[t->count] = value;
  t->index[i] = static_cast<int32_t>(++t->count);
  ++t->live;
}

bool TableRemove(ALGEB table, ALGEB key) {
  TableNode* t = CheckTable(table);
  bool found;
  uint32_t i = FindSlot(t, key, Hash(key), &found);
  if (!found) return false;
  int32_t entry = t->index[i] - 1;
  t->keys[entry] = t->values[entry] = nullptr;
  t->index[i] = -1;
  --t->live;
  return true;
}

std::vector<std::pair<ALGEB, ALGEB>> TableEntries(ALGEB table) {
  TableNode* t = CheckTable(table);
  std::vector<std::pair<ALGEB, ALGEB>> out;
  for (uint32_t i = 0; i < t->count; ++i)
    if (t->keys[i] != nullptr) out.emplace_back(t->keys[i], t->values[i]);
  return out;
}

}  // namespace vexa
