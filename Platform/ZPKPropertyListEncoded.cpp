// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <plist/plist.h>

#include <cstdlib>
#include <memory>
#include <type_traits>

#include "Platform/ZPKPropertyListBinaryGuard.h"
#include "Platform/ZPKPropertyListNode.h"
#include "Platform/ZPKPropertyListXMLGuard.h"

namespace {

using Node = ZPKPropertyList::Node;

struct ListFree {
    void operator()(plist_t list) const { plist_free(list); }
};
using ListOwner = std::unique_ptr<std::remove_pointer_t<plist_t>, ListFree>;

struct MemoryFree {
    void operator()(void* memory) const { std::free(memory); }
};

std::string stringOf(plist_t node) {
    std::uint64_t length = 0;
    const char* const text = plist_get_string_ptr(node, &length);
    return text == nullptr ? std::string() : std::string(text, static_cast<std::size_t>(length));
}

Node::Strings stringsOf(plist_t array) {
    Node::Strings strings;
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    const std::unique_ptr<void, MemoryFree> iteratorOwner(iterator);
    plist_t element = nullptr;
    for (plist_array_next_item(array, iterator, &element); element != nullptr;
         plist_array_next_item(array, iterator, &element)) {
        if (plist_get_node_type(element) == PLIST_STRING) {
            strings.push_back(stringOf(element));
        }
    }
    return strings;
}

Node::Value valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_STRING:
            return stringOf(node);
        case PLIST_ARRAY:
            return stringsOf(node);
        default:
            return Node::Other{};
    }
}

std::optional<Node> rootOf(plist_t list) {
    if (list == nullptr || plist_get_node_type(list) != PLIST_DICT) {
        return std::nullopt;
    }
    Node root;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(list, &iterator);
    const std::unique_ptr<void, MemoryFree> iteratorOwner(iterator);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(list, iterator, &key, &value);
        const std::unique_ptr<char, MemoryFree> keyOwner(key);
        if (key == nullptr) {
            return root;
        }
        root.values.insert_or_assign(key, valueOf(value));
    }
}

}  // namespace

std::optional<ZPKPropertyList::Node> ZPKPropertyList::Node::fromXML(std::string_view text) {
    const std::optional<std::string> plain =
        ZPKPropertyListXMLGuard::plainText(text, kDeepestNesting, kMostKeys);
    if (!plain) {
        return std::nullopt;
    }
    plist_t list = nullptr;
    plist_from_xml(plain->data(), static_cast<std::uint32_t>(plain->size()), &list);
    const ListOwner owner(list);
    return rootOf(list);
}

std::optional<ZPKPropertyList::Node> ZPKPropertyList::Node::fromBinary(std::string_view bytes) {
    if (!ZPKPropertyListBinaryGuard::isReasonable(bytes, kDeepestNesting, kMostKeys)) {
        return std::nullopt;
    }
    plist_t list = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &list);
    const ListOwner owner(list);
    return rootOf(list);
}
