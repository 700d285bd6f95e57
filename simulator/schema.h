// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_SCHEMA_H
#define KORVO_SIMULATOR_SCHEMA_H

namespace simulator {

/// Marks a database file as the store of an action engine ("KAES"), so that no other database is taken for one.
inline constexpr int store_application_id = 0x4B414553;

/// The version of the schemas below, kept in the file as user_version. A change of the schema gets the next number and
/// a step in Store that brings older files to it.
inline constexpr int store_version = 2;

inline constexpr char const *store_schema = R"sql(
-- AUTOINCREMENT: an identifier is never given out again, also after its entry was deleted.
-- settings: a JSON object with the inputs of the kind's create operation.
-- filters: a JSON object with the three lists of Get_action_filters.
CREATE TABLE actions (
    id       INTEGER PRIMARY KEY AUTOINCREMENT,
    type     INTEGER NOT NULL,
    settings TEXT NOT NULL,
    filters  TEXT NOT NULL
) STRICT;

CREATE TABLE triggers (
    id       INTEGER PRIMARY KEY AUTOINCREMENT,
    type     INTEGER NOT NULL,
    settings TEXT NOT NULL
) STRICT;

-- Associations go with their trigger and with their action.
CREATE TABLE associations (
    trigger_id INTEGER NOT NULL REFERENCES triggers (id) ON DELETE CASCADE,
    action_id  INTEGER NOT NULL REFERENCES actions (id) ON DELETE CASCADE,
    PRIMARY KEY (trigger_id, action_id)
) STRICT, WITHOUT ROWID;
CREATE INDEX associations_by_action ON associations (action_id);
)sql";

/// What version 2 added, also to the schema of a new store.
inline constexpr char const *store_schema_2 = R"sql(
-- What fired and what did not, and why: the last ones of each outcome.
-- trace: a JSON object, as describe() in traces/trace.h writes it.
CREATE TABLE traces (
    id      INTEGER PRIMARY KEY,
    outcome INTEGER NOT NULL,
    trace   TEXT NOT NULL
) STRICT;
)sql";

}  // namespace simulator

#endif
