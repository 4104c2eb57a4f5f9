#pragma once

#include <algorithm>
#include <iterator>
#include <optional>

/// One row of the table of a sequence: in \a from, \a event leads to \a to.
template <typename State, typename Event>
struct Transition
{
    State from;
    Event event;
    State to;
};

/// Where \a event leads from \a current by the table \a rows; empty where it has no row for that.
template <typename Rows, typename State, typename Event>
std::optional<State> nextState(const Rows &rows, State current, Event event)
{
    const auto it = std::find_if(std::begin(rows), std::end(rows), [&](const auto &row) {
        return row.from == current && row.event == event;
    });
    return it != std::end(rows) ? std::optional(it->to) : std::nullopt;
}
