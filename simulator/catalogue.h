// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CATALOGUE_H
#define KORVO_SIMULATOR_CATALOGUE_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "simulator/kinds.h"
#include "simulator/meaning.h"
#include "simulator/store.h"
#include "simulator/values.h"

namespace simulator {

/// What the service knows: actions with their filters, triggers, and which trigger runs which action. All of it is in
/// memory, and reads are answered from there; a change is in the store before it is in memory, so that what a
/// client was told is there after a restart.
///
/// Changes throw StoreError when the store does not take them, Refused (status 9) when what they make could not be read
/// back, and std::bad_alloc; then nothing has changed, neither here nor in the store. Functions that are given an identifier throw Refused (status 9) when there is no
/// such entry. Not safe to share between threads without a lock.
class Catalogue {
  public:
    using Table = Store::Table;

    /// Bounds that keep every list of the service within one message, and its memory bounded. What goes beyond is
    /// refused with status 9.
    static constexpr std::size_t most_entries = 50'000;
    static constexpr std::size_t most_associations = 500'000;

    struct Entry {
        EntryKind const *kind;
        Values settings;
        /// Actions only: the lists of Get_action_filters.
        Values filters;
        /// Triggers only.
        TriggerMeaning meaning;
        /// Why the trigger never fires, or the action never runs; empty when it does.
        std::string fault;
    };
    using Entries = std::map<std::uint32_t, Entry>;
    using Pairs = std::set<std::pair<std::uint32_t, std::uint32_t>>;
    /// How many entries there are of each type; the n-th is that of type n.
    using Counts = std::array<std::uint32_t, std::max(std::size(action_kinds), std::size(trigger_kinds))>;

    /// What becomes of a change that makes a trigger that can never fire, or an action that can never run: it is refused
    /// with status 9, or kept with its fault.
    enum class Nonsense { refused, kept };

    /// What becomes of the deletion of an action or trigger that is bound: its associations go too, or it is refused with
    /// status 9.
    enum class Deletion { cascades, refused };

    /// How many entries one table takes. A store that holds more keeps them; only new ones are refused.
    struct Bounds {
        std::size_t most = most_entries;
        /// The n-th is that of type n, for those that have one of their own.
        std::array<std::optional<std::size_t>, std::tuple_size_v<Counts>> most_of_type{};
    };

    struct Rules {
        Nonsense nonsense = Nonsense::refused;
        Deletion deletion = Deletion::cascades;
        Bounds actions{};
        Bounds triggers{};
    };

    /// Reads what the store holds; nonsense in it is kept. The store must outlive the catalogue. Throws StoreError for
    /// contents that cannot be understood.
    explicit Catalogue(Store &store);
    Catalogue(Store &store, Rules const &rules);

    Nonsense nonsense() const { return rules_.nonsense; }
    Store &store() const { return store_; }

    /// Actions or triggers, identifiers ascending.
    Entries const &entries(Table table) const { return table == Table::actions ? actions_ : triggers_; }
    /// Kept, not counted: as quick with many entries as with none.
    Counts const &counts(Table table) const {
        return table == Table::actions ? action_counts_ : trigger_counts_;
    }
    Entry const &at(Table table, std::uint32_t id) const;
    /// NULL when there is no such entry.
    Entry const *find(Table table, std::uint32_t id) const;

    /// Adds an entry with the settings of its kind and gives its identifier: 1 and upward, none ever used again.
    std::uint32_t create(Table table, EntryKind const &kind, Values settings);
    /// Refused with status 9 for an entry of another kind.
    Values const &settings(Table table, EntryKind const &kind, std::uint32_t id) const;
    void modify(Table table, EntryKind const &kind, std::uint32_t id, Values settings);
    /// Removes the entry with its filters and, where that is not refused, its associations.
    void remove(Table table, std::uint32_t id);

    void setFilters(std::uint32_t action_id, Values filters);

    /// Binding a pair that is bound already changes nothing and is no error.
    void associate(std::uint32_t trigger_id, std::uint32_t action_id);
    /// Refused with status 9 for a pair that is not bound.
    void dissociate(std::uint32_t trigger_id, std::uint32_t action_id);
    /// (trigger, action), ascending.
    Pairs const &associations() const { return by_trigger_; }

    /// All that a catalogue holds.
    struct Contents {
        Entries actions;
        Entries triggers;
        Pairs associations;
    };
    /// Takes these contents, identifiers included, in place of what there is: all or nothing. What they mean is made out
    /// here. Throws StoreError, and Refused (status 9) for what single commands would be refused for.
    void replace(Contents contents);

    /// Identifiers ascending.
    std::vector<std::uint32_t> actionsOf(std::uint32_t trigger_id) const;
    std::vector<std::uint32_t> triggersOf(std::uint32_t action_id) const;

  private:
    Entries &changeable(Table table) { return table == Table::actions ? actions_ : triggers_; }
    Counts &changeableCounts(Table table) {
        return table == Table::actions ? action_counts_ : trigger_counts_;
    }
    void insert(Table table, std::uint32_t id, Entry entry);
    Entry const &ofKind(Table table, EntryKind const &kind, std::uint32_t id) const;

    /// Makes out what the entry means. Throws Refused as the treatment of nonsense says.
    void understand(Table table, Entry &entry) const;
    Bounds const &bounds(Table table) const {
        return table == Table::actions ? rules_.actions : rules_.triggers;
    }

    Store &store_;
    Rules rules_;
    Entries actions_;
    Entries triggers_;
    Counts action_counts_{};
    Counts trigger_counts_{};
    /// (trigger, action), and the same pairs the other way round.
    Pairs by_trigger_;
    Pairs by_action_;
};

}  // namespace simulator

#endif
