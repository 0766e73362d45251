#pragma once

class CSQLiteDB;

/// The tables of the host's store.
namespace qo::host::storeSchema
{
/// Makes what is missing. Throws HostError when a newer version of this program made the store, and
/// what the database layer throws.
void make(CSQLiteDB& db);
/// Whether the tables are there to be read; false for a store that is only being made.
bool isMade(CSQLiteDB& db);
/// The versions with which tables came: FACT_T, CHECKED_T, those of playlists, those of notes,
/// OFFER_T.
constexpr int facts = 2;
constexpr int marks = 3;
constexpr int playlists = 4;
constexpr int notes = 5;
constexpr int offers = 6;
bool has(CSQLiteDB& db, int version);
} // namespace qo::host::storeSchema
