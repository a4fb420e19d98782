#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

namespace velmora {

// Items in a row, linked through their own field "Item* next". The list is one pointer, to the last item; the next of
// that is the first, so that the row is a ring. An item is in one list at a time, stays where it is in memory, and
// belongs to whoever made it.
template <typename Item>
class XmlList {
public:
    template <typename Seen>  // Item, or const Item where the list is
    class Iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Item;
        using difference_type = std::ptrdiff_t;
        using pointer = Seen*;
        using reference = Seen&;

        Iterator() = default;
        Iterator(Seen* first, const Item* end) : item(first), last(end) {}

        Seen& operator*() const { return *item; }
        Seen* operator->() const { return item; }
        Iterator& operator++() {
            item = item == last ? nullptr : item->next;
            return *this;
        }
        Iterator operator++(int) {  // NOLINT(cert-dcl21-cpp): a const result is what another check is against
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return item == other.item; }

    private:
        Seen* item = nullptr;  // nullptr at the end
        const Item* last = nullptr;
    };

    XmlList() = default;
    XmlList(XmlList&& other) noexcept : last(std::exchange(other.last, nullptr)) {}
    XmlList(const XmlList&) = delete;
    XmlList& operator=(const XmlList&) = delete;

    bool empty() const { return last == nullptr; }
    size_t size() const { return static_cast<size_t>(std::distance(begin(), end())); }  // goes through all of them
    Item& front() { return *last->next; }
    const Item& front() const { return *last->next; }

    Iterator<Item> begin() { return {empty() ? nullptr : last->next, last}; }
    Iterator<Item> end() { return {}; }
    Iterator<const Item> begin() const { return {empty() ? nullptr : last->next, last}; }
    Iterator<const Item> end() const { return {}; }

    void append(Item& item) {
        if (empty()) {
            item.next = &item;
        } else {
            item.next = std::exchange(last->next, &item);
        }
        last = &item;
    }

    // Takes the items of other, which is empty afterwards, behind its own.
    void appendAll(XmlList& other) {
        if (other.empty()) return;
        if (!empty()) std::swap(last->next, other.last->next);
        last = std::exchange(other.last, nullptr);
    }

    // Takes out the first item. There must be one.
    Item& takeFront() {
        Item& first = front();
        if (&first == last) {
            last = nullptr;
        } else {
            last->next = first.next;
        }
        return first;
    }

private:
    Item* last = nullptr;
};

}  // namespace velmora
