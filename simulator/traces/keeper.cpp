// SPDX-License-Identifier: Apache-2.0
#include "simulator/traces/keeper.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <exception>
#include <utility>

namespace simulator {

KeptTrace::KeptTrace(Trace trace)
    : id_(trace.id),
      outcome_(trace.outcome()),
      size_(trace.size()),
      trace_(std::make_shared<Trace const>(std::move(trace))) {}

KeptTrace::KeptTrace(std::uint64_t id, Outcome outcome, std::string text)
    : id_(id),
      outcome_(outcome),
      size_(text.size()),
      text_(std::make_shared<std::string const>(std::move(text))) {}

boost::json::object KeptTrace::object() const {
    if (trace_ != nullptr) {
        return describe(*trace_);
    }
    boost::json::error_code error;
    boost::json::value const value = boost::json::parse(*text_, error);
    return value.is_object() ? value.get_object() : boost::json::object{{"id", id_}};
}

void TraceKeeper::add(Trace trace) noexcept {
    if (!keeps()) {
        return;
    }
    try {
        trace.id = ++last_id_;
        KeptTrace kept(std::move(trace));
        changes_.added.push_back(kept);
        if (changes_.added.size() > most_unwritten) {
            // Nobody has looked for long; the oldest are of least interest.
            changes_.added.erase(changes_.added.begin(), changes_.added.begin() + most_unwritten / 2);
        }
        insert(std::move(kept));
    } catch (std::exception const &) {
        // What happened goes before what is told of it.
    }
}

void TraceKeeper::restore(KeptTrace trace) {
    last_id_ = std::max(last_id_, trace.id());
    if (keeps()) {
        insert(std::move(trace));
    } else {
        changes_.removed.push_back(trace.id());
    }
}

void TraceKeeper::insert(KeptTrace trace) {
    Row &row = rows_[static_cast<std::size_t>(trace.outcome())];
    std::size_t const size = trace.size();
    row.traces.push_back(std::move(trace));
    row.bytes += size;
    while (row.traces.size() > most_ || (row.bytes > most_bytes && row.traces.size() > 1)) {
        row.bytes -= row.traces.front().size();
        changes_.removed.push_back(row.traces.front().id());
        row.traces.pop_front();
    }
}

std::vector<KeptTrace> TraceKeeper::after(std::uint64_t id) const {
    std::vector<KeptTrace> found;
    for (Row const &row : rows_) {
        auto const first = std::partition_point(row.traces.begin(), row.traces.end(),
                                                [id](KeptTrace const &trace) { return trace.id() <= id; });
        found.insert(found.end(), first, row.traces.end());
    }
    std::sort(found.begin(), found.end(),
              [](KeptTrace const &one, KeptTrace const &other) { return one.id() < other.id(); });
    return found;
}

TraceKeeper::Changes TraceKeeper::takeChanges() {
    Changes changes = std::exchange(changes_, {});
    // What has come and gone since need not be written.
    std::sort(changes.removed.begin(), changes.removed.end());
    auto const gone = std::partition(changes.added.begin(), changes.added.end(), [&](KeptTrace const &trace) {
        return !std::binary_search(changes.removed.begin(), changes.removed.end(), trace.id());
    });
    changes.added.erase(gone, changes.added.end());
    std::sort(changes.added.begin(), changes.added.end(),
              [](KeptTrace const &one, KeptTrace const &other) { return one.id() < other.id(); });
    return changes;
}

}  // namespace simulator
