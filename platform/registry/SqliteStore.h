// The registry's store in one SQLite database: a table of keys, each below another, and one of values. Every
// operation is one transaction; one that finds the file busy waits some seconds for its turn. The database
// keeps a journal beside it while it writes, by which the next to open it undoes what a killed process left
// half done.
#pragma once

#include <sqlite3.h>

#include <mutex>

#include "platform/registry/RegistryStore.h"

class SqliteStore final : public RegistryStore {
public:
    // Once, before all else; the file is created only for writing.
    DWORD Open(const std::string& path, bool forWriting);

    DWORD FindKey(Key from, std::string_view path, Key& key) override;
    DWORD CreateKey(Key from, std::string_view path, Key& key, bool& created) override;
    DWORD DeleteKey(Key from, std::string_view path) override;
    DWORD SetValue(Key key, std::string_view name, DWORD type, std::string_view data) override;
    DWORD GetValue(Key key, std::string_view name, DWORD& type, std::string& data) override;

private:
    class Statement;
    struct Closer {
        void operator()(sqlite3* database) const noexcept { sqlite3_close(database); }
    };

    // Runs `work` as a whole: what it did stays if it returns ERROR_SUCCESS.
    template <class Work>
    DWORD Transact(Work work);
    DWORD Run(const char* statements);
    DWORD Walk(Key from, std::string_view path, Key& key);
    DWORD FindChild(Key parent, std::string_view name, Key& key);
    DWORD AddChild(Key parent, std::string_view name, Key& key);
    DWORD Failure() const;  // after a call of the database that failed: the platform's code

    std::mutex m_lock;  // the connection, between the start and the end of an operation
    std::unique_ptr<sqlite3, Closer> m_database;
};
