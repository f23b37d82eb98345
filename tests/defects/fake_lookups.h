// A DefectLookups over plain maps for the tests of defects and their forms: an id that a
// test did not enter names nothing.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <tuple>
#include <utility>

#include "defects/defect_lookups.h"
#include "people/test_config.h"
#include "people/user.h"
#include "session/value_item.h"

namespace qm::test {

class FakeLookups : public DefectLookups {
 public:
  const CUser* User(std::uint32_t id) const override { return Find(users, id); }
  const CUserGroup* Group(std::uint32_t) const override { return nullptr; }
  const CTestConfig* TestConfig(std::uint32_t id) const override { return Find(configs, id); }
  const ValueItem* Value(Tag list, std::uint32_t id) const override {
    return Find(values, std::pair(list, id));
  }
  std::uint32_t ValuePosition(Tag list, std::uint32_t id) const override {
    auto it = positions.find({list, id});
    return it != positions.end() ? it->second : 0;
  }
  std::uint32_t CurrentUserId() const override { return current; }

  struct NamedValue {
    Tag list;
    std::uint32_t id;
    const char* name;
  };
  // Enters each name as the value of its id in its list.
  void AddValues(std::initializer_list<NamedValue> names) {
    for (const NamedValue& v : names) {
      values.emplace(std::piecewise_construct, std::forward_as_tuple(v.list, v.id),
                     std::forward_as_tuple(v.name, 1u));
    }
  }

  std::map<std::uint32_t, CUser> users;
  std::map<std::uint32_t, CTestConfig> configs;
  std::map<std::pair<Tag, std::uint32_t>, ValueItem> values;
  std::map<std::pair<Tag, std::uint32_t>, std::uint32_t> positions;
  std::uint32_t current = 0;

 private:
  template <typename Map, typename Key>
  static const typename Map::mapped_type* Find(const Map& map, const Key& key) {
    auto it = map.find(key);
    return it != map.end() ? &it->second : nullptr;
  }
};

}  // namespace qm::test
