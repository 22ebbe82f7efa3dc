#include "http/header_map.h"

#include <stdexcept>

namespace quorin::http {

void HeaderMap::set(std::string_view name, std::string_view value) {
    entries_.insert_or_assign(std::string(name), value);
}

bool HeaderMap::contains(std::string_view name) const {
    return entries_.contains(std::string(name));
}

std::string HeaderMap::get(std::string_view name) const {
    std::string key(name);
    const auto entry = entries_.find(key);
    if (entry == entries_.end()) {
        throw std::out_of_range(std::move(key) + " does not exist");
    }
    return entry->second;
}

} // namespace quorin::http
