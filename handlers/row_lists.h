// Every handler group's lists of rows and renders in one place, for the checks that walk
// all of them (the sweep test and the rows fuzz target).
#pragma once

#include <span>

#include "shapes/rows.h"

namespace row_lists {

// One group's lists. They are reached through pointers so that this table is complete
// before any other file's constructors run, whatever order the lists are set up in.
struct Group {
    const char* name;
    const std::span<const shapes::GetRef>* gets = nullptr;
    const std::span<const shapes::RenderRef>* renders = nullptr;
    const std::span<const shapes::SetRef>* sets = nullptr;
    const std::span<const shapes::MenuRef>* menus = nullptr;

    // The lists, empty where the group has none of a kind.
    template <class T>
    static std::span<const T> of(const std::span<const T>* list) {
        return list != nullptr ? *list : std::span<const T>{};
    }
    std::span<const shapes::GetRef> getRows() const { return of(gets); }
    std::span<const shapes::RenderRef> renderList() const { return of(renders); }
    std::span<const shapes::SetRef> setRows() const { return of(sets); }
    std::span<const shapes::MenuRef> menuRows() const { return of(menus); }
};

// Every group that keeps lists; a new group adds its line in row_lists.cpp.
extern const std::span<const Group> groups;

}  // namespace row_lists
