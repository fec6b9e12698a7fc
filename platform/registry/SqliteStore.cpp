#include "platform/registry/SqliteStore.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/base/LastError.h"
#include "platform/file/ErrorTable.h"

namespace {

constexpr std::chrono::seconds kPatience(5);
// Between two looks whether it's our turn. Short: who registers again and again leaves gaps that are no
// longer.
constexpr std::chrono::milliseconds kPause(1);

// In the head of the database: whose it is, and by which version of the tables. A later version that this
// code can't read has a greater number.
constexpr int64_t kMark = 0x564C5247;
constexpr int64_t kVersion = 1;

// Names are compared without regard to the case of A to Z. Values go with their key; a key that still has
// keys below it can't be deleted, since nothing cascades there.
constexpr const char* kTables =
    "CREATE TABLE IF NOT EXISTS keys("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"  // so that an open key never becomes another
    " parent INTEGER REFERENCES keys,"
    " name TEXT NOT NULL COLLATE NOCASE,"
    " UNIQUE(parent, name));"
    "CREATE TABLE IF NOT EXISTS entries("
    " key INTEGER NOT NULL REFERENCES keys ON DELETE CASCADE,"
    " name TEXT NOT NULL COLLATE NOCASE,"
    " type INTEGER NOT NULL,"
    " data BLOB NOT NULL,"
    " PRIMARY KEY(key, name)) WITHOUT ROWID;"
    "INSERT OR IGNORE INTO keys(id, name) VALUES(1, 'HKEY_CLASSES_ROOT'), (2, 'HKEY_LOCAL_MACHINE');";

// How a piece of work begins, and its two ends.
struct Frame {
    const char* begin;
    const char* keep;
    const char* undo;
};
// The right to write is taken at once: two that have read can't both go on to write.
constexpr Frame kWhole = {"BEGIN IMMEDIATE", "COMMIT", "ROLLBACK"};
constexpr Frame kPart = {"SAVEPOINT part", "RELEASE part", "ROLLBACK TO part; RELEASE part"};

struct SqliteErrorRow {
    int database;
    DWORD platform;
};
constexpr SqliteErrorRow kSqliteErrors[] = {
    {SQLITE_OK, ERROR_SUCCESS},
    {SQLITE_ERROR, ERROR_FILE_NOT_FOUND},  // no table: nobody has written yet
    {SQLITE_PERM, ERROR_ACCESS_DENIED},
    {SQLITE_AUTH, ERROR_ACCESS_DENIED},
    {SQLITE_READONLY, ERROR_ACCESS_DENIED},
    {SQLITE_CANTOPEN, ERROR_ACCESS_DENIED},
    {SQLITE_BUSY, ERROR_BUSY},
    {SQLITE_LOCKED, ERROR_BUSY},
    {SQLITE_NOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {SQLITE_FULL, ERROR_DISK_FULL},
    {SQLITE_IOERR, ERROR_REGISTRY_IO_FAILED},
    {SQLITE_CORRUPT, ERROR_REGISTRY_CORRUPT},
    {SQLITE_NOTADB, ERROR_NOT_REGISTRY_FILE},
    {SQLITE_CONSTRAINT, ERROR_KEY_DELETED},  // what it would belong to is gone
};

DWORD ErrorFromDatabase(int error) {
    for (const SqliteErrorRow& row : kSqliteErrors)
        // The low byte is the kind of error; what the database may add above it says more than any
        // code here can.
        if (row.database == (error & 0xFF)) return row.platform;
    return ERROR_GEN_FAILURE;
}

// Takes the first name off a path.
std::string_view NextName(std::string_view& path) {
    const std::string_view name = path.substr(0, path.find('\\'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    return name;
}

}  // namespace

// One statement with its arguments, which must outlive it. What fails along the way shows in the step.
class SqliteStore::Statement {
public:
    Statement(sqlite3* database, const char* text) {
        sqlite3_prepare_v2(database, text, -1, &m_statement, nullptr);
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite3_finalize(m_statement); }

    Statement& Bind(int64_t number) {
        sqlite3_bind_int64(m_statement, ++m_bound, number);
        return *this;
    }
    Statement& BindText(std::string_view text) {
        // Static: the arguments outlive the statement, so the database needs no copy.
        sqlite3_bind_text64(m_statement, ++m_bound, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
        return *this;
    }
    Statement& BindBytes(std::string_view bytes) {
        // Null would be no data, instead of none.
        sqlite3_bind_blob64(m_statement, ++m_bound, bytes.empty() ? "" : bytes.data(), bytes.size(),
                            SQLITE_STATIC);
        return *this;
    }
    int Step() { return m_statement ? sqlite3_step(m_statement) : SQLITE_ERROR; }
    int64_t Number(int column) { return sqlite3_column_int64(m_statement, column); }
    std::string Bytes(int column) {
        const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(m_statement, column));
        return bytes ? std::string(bytes, static_cast<size_t>(sqlite3_column_bytes(m_statement, column)))
                     : "";
    }

private:
    sqlite3_stmt* m_statement = nullptr;
    int m_bound = 0;
};

DWORD SqliteStore::Failure() const { return ErrorFromDatabase(sqlite3_errcode(m_database.get())); }

DWORD SqliteStore::Run(const char* statements) {
    return ErrorFromDatabase(sqlite3_exec(m_database.get(), statements, nullptr, nullptr, nullptr));
}

DWORD SqliteStore::Open(const std::string& path, bool forWriting) {
    // A reader too may have to undo what a killed process left, so it writes where it can.
    const int flags = SQLITE_OPEN_READWRITE | (forWriting ? SQLITE_OPEN_CREATE : 0);
    sqlite3* database = nullptr;
    const int error = sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    // Also after a failure there is a connection, which has to be closed.
    m_database.reset(database);
    if (error != SQLITE_OK) {
        const int reason = database ? sqlite3_system_errno(database) : 0;
        return reason != 0 ? ErrorFromErrno(reason) : ErrorFromDatabase(error);
    }
    sqlite3_busy_handler(database, &WaitForTurn, this);
    if (!forWriting) return ERROR_SUCCESS;
    if (sqlite3_db_readonly(database, "main")) return ERROR_ACCESS_DENIED;
    // Each connection has to ask for them, and without them a deleted key would leave its values.
    return Run("PRAGMA foreign_keys = ON");
}

// One patience for all waits of a transaction, its end included.
void SqliteStore::StartWaiting() {
    if (!m_inTransaction) m_patienceEnds = std::chrono::steady_clock::now() + kPatience;
}

int SqliteStore::WaitForTurn(void* store, int /*looks*/) {
    if (std::chrono::steady_clock::now() >= static_cast<SqliteStore*>(store)->m_patienceEnds) return 0;
    std::this_thread::sleep_for(kPause);
    return 1;
}

// Anything but a registry of a version that is known, or an empty database, is somebody else's.
DWORD SqliteStore::Recognise(bool& marked) {
    Statement head(m_database.get(),
                   "SELECT application_id, user_version, (SELECT group_concat(name) FROM"
                   " (SELECT name FROM sqlite_master WHERE name NOT GLOB 'sqlite_*' ORDER BY name))"
                   " FROM pragma_application_id, pragma_user_version");
    if (head.Step() != SQLITE_ROW) return Failure();
    const int64_t mark = head.Number(0);
    const int64_t version = head.Number(1);
    const std::string tables = head.Bytes(2);
    marked = mark == kMark;
    if (marked) return version > kVersion ? ERROR_REVISION_MISMATCH : ERROR_SUCCESS;
    // Registries were without marks once; they are known by their tables.
    const bool ours = mark == 0 && version == 0 && (tables.empty() || tables == "entries,keys");
    return ours ? ERROR_SUCCESS : ERROR_NOT_REGISTRY_FILE;
}

DWORD SqliteStore::MakeTables() {
    return Run((kTables + ("PRAGMA application_id = " + std::to_string(kMark)) +
                "; PRAGMA user_version = " + std::to_string(kVersion))
                   .c_str());
}

DWORD SqliteStore::BeginWriting() {
    if (const DWORD error = Run(kWhole.begin)) return error;
    // Looked at under the lock: before it, another version may have been here.
    bool marked = false;
    DWORD error = Recognise(marked);
    if (error == ERROR_SUCCESS && !marked) error = MakeTables();
    if (error != ERROR_SUCCESS) Run(kWhole.undo);
    return error;
}

// After grave errors the database takes back the whole by itself; what came now would stand alone.
DWORD SqliteStore::BeginPart() {
    return sqlite3_get_autocommit(m_database.get()) ? ERROR_REGISTRY_IO_FAILED : Run(kPart.begin);
}

DWORD SqliteStore::Begin() {
    const std::lock_guard lock(m_lock);
    StartWaiting();
    const DWORD error = BeginWriting();
    m_inTransaction = error == ERROR_SUCCESS;
    return error;
}

DWORD SqliteStore::End(bool keep) {
    const std::lock_guard lock(m_lock);
    m_inTransaction = false;
    if (sqlite3_get_autocommit(m_database.get())) return keep ? ERROR_REGISTRY_IO_FAILED : ERROR_SUCCESS;
    const DWORD error = Run(keep ? kWhole.keep : kWhole.undo);
    // The transaction is still open then.
    if (keep && error != ERROR_SUCCESS) Run(kWhole.undo);
    return error;
}

template <class Work>
DWORD SqliteStore::Transact(Work work) {
    const std::lock_guard lock(m_lock);
    StartWaiting();
    const Frame& frame = m_inTransaction ? kPart : kWhole;
    if (const DWORD error = m_inTransaction ? BeginPart() : BeginWriting()) return error;
    DWORD error = work();
    if (error == ERROR_SUCCESS) error = Run(frame.keep);
    // After a COMMIT that failed too: the transaction is still open then, and the next one couldn't begin.
    if (error != ERROR_SUCCESS) Run(frame.undo);
    return error;
}

template <class Work>
DWORD SqliteStore::Look(Work work) {
    const std::lock_guard lock(m_lock);
    StartWaiting();
    bool marked = false;
    const DWORD error = Recognise(marked);
    return error == ERROR_SUCCESS ? work() : error;
}

DWORD SqliteStore::FindChild(Key parent, std::string_view name, Key& key) {
    Statement statement(m_database.get(), "SELECT id FROM keys WHERE parent = ? AND name = ?");
    const int result = statement.Bind(parent).BindText(name).Step();
    if (result == SQLITE_DONE) return ERROR_FILE_NOT_FOUND;
    if (result != SQLITE_ROW) return Failure();
    key = statement.Number(0);
    return ERROR_SUCCESS;
}

DWORD SqliteStore::AddChild(Key parent, std::string_view name, Key& key) {
    Statement statement(m_database.get(), "INSERT INTO keys(parent, name) VALUES(?, ?)");
    if (statement.Bind(parent).BindText(name).Step() != SQLITE_DONE) return Failure();
    key = sqlite3_last_insert_rowid(m_database.get());
    return ERROR_SUCCESS;
}

DWORD SqliteStore::Walk(Key from, std::string_view path, Key& key) {
    while (!path.empty())
        if (const DWORD error = FindChild(from, NextName(path), from)) return error;
    key = from;
    return ERROR_SUCCESS;
}

DWORD SqliteStore::FindKey(Key from, std::string_view path, Key& key) {
    return Look([&] { return Walk(from, path, key); });
}

DWORD SqliteStore::CreateKey(Key from, std::string_view path, Key& key, bool& created) {
    return Transact([&] {
        created = false;
        while (!path.empty()) {
            const std::string_view name = NextName(path);
            DWORD error = FindChild(from, name, from);
            created = error == ERROR_FILE_NOT_FOUND;
            if (created) error = AddChild(from, name, from);
            if (error) return error;
        }
        key = from;
        return ERROR_SUCCESS;
    });
}

DWORD SqliteStore::DeleteKey(Key from, std::string_view path) {
    return Transact([&] {
        Key key = 0;
        if (const DWORD error = Walk(from, path, key)) return error;
        Statement statement(m_database.get(), "DELETE FROM keys WHERE id = ?");
        if (statement.Bind(key).Step() == SQLITE_DONE) return ERROR_SUCCESS;
        const DWORD error = Failure();
        return error == ERROR_KEY_DELETED ? ERROR_ACCESS_DENIED : error;  // here: there are keys below it
    });
}

DWORD SqliteStore::SetValue(Key key, std::string_view name, DWORD type, std::string_view data) {
    return Transact([&] {
        Statement statement(m_database.get(), "INSERT OR REPLACE INTO entries VALUES(?, ?, ?, ?)");
        const int result = statement.Bind(key).BindText(name).Bind(type).BindBytes(data).Step();
        return result == SQLITE_DONE ? ERROR_SUCCESS : Failure();
    });
}

DWORD SqliteStore::GetValue(Key key, std::string_view name, DWORD& type, std::string& data) {
    return Look([&] {
        Statement statement(m_database.get(), "SELECT type, data FROM entries WHERE key = ? AND name = ?");
        const int result = statement.Bind(key).BindText(name).Step();
        if (result == SQLITE_DONE) return ERROR_FILE_NOT_FOUND;
        if (result != SQLITE_ROW) return Failure();
        type = static_cast<DWORD>(statement.Number(0));
        data = statement.Bytes(1);
        return ERROR_SUCCESS;
    });
}

// The library's only export: see RegistryStore.h.
extern "C" __attribute__((visibility("default"))) DWORD VlOpenRegistryStore(
    const std::string& path, bool forWriting, std::unique_ptr<RegistryStore>& store) {
    auto opened = std::make_unique<SqliteStore>();
    const DWORD error = opened->Open(path, forWriting);
    if (error == ERROR_SUCCESS) store = std::move(opened);
    return error;
}
