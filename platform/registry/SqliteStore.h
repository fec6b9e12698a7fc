// The registry's store in one SQLite database: a table of keys, each below another, and one of values. An
// operation outside of a transaction is one by itself; one that finds the file busy waits some seconds for
// its turn. The database keeps a journal beside it while it writes, by which the next to open it undoes what
// a killed process left half done. The database says in its head that it is a registry, and of which version:
// one that says something else is neither read nor written.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <mutex>

#include "platform/registry/RegistryStore.h"

class SqliteStore final : public RegistryStore {
public:
    // Once, before all else; the file is created only for writing.
    DWORD Open(const std::string& path, bool forWriting);

    DWORD Begin() override;
    DWORD End(bool keep) override;
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
    // Runs `work`, which only reads, on a database that is a registry or empty.
    template <class Work>
    DWORD Look(Work work);

    DWORD BeginWriting();
    DWORD BeginPart();
    DWORD MakeTables();
    DWORD Recognise(bool& marked);
    void StartWaiting();
    static int WaitForTurn(void* store, int);
    DWORD Run(const char* statements);
    DWORD Walk(Key from, std::string_view path, Key& key);
    DWORD FindChild(Key parent, std::string_view name, Key& key);
    DWORD AddChild(Key parent, std::string_view name, Key& key);
    DWORD Failure() const;  // after a call of the database that failed: the platform's code

    std::mutex m_lock;  // the connection, between the start and the end of an operation
    std::unique_ptr<sqlite3, Closer> m_database;
    bool m_inTransaction = false;                          // between Begin and End
    std::chrono::steady_clock::time_point m_patienceEnds;  // of the transaction, or the operation
};
