// Container and string aliases of the object runtime.
#pragma once

#include <string>
#include <unordered_map>

namespace Lumo {

using String = std::string;

template <typename Key, typename Value, typename Hash = std::hash<Key>>
using HashMap = std::unordered_map<Key, Value, Hash>;

}  // namespace Lumo
