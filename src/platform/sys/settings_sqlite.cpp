// SPDX-License-Identifier: Apache-2.0
// Settings in a database file: safe under writers of many processes and under a kill at any moment.
#include <fcntl.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iterator>

#include "platform/sys/file_backend.h"
#include "platform/sys/settings.h"
#include "platform/sys/settings_store.h"

namespace plat {
namespace {

constexpr int kFormat = 1;
constexpr int kWaitMilliseconds = 5000;

/// Names stand twice: as written, and folded for look-up and order, since the database folds ASCII letters only.
/// Numbers of keys aren't used again, so that a handle on a deleted key never meets another.
constexpr const char* kSchema =
    "BEGIN IMMEDIATE;"
    "CREATE TABLE IF NOT EXISTS keys(id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " parent INTEGER REFERENCES keys(id) ON DELETE CASCADE, folded TEXT NOT NULL, name TEXT NOT NULL,"
    " UNIQUE(parent, folded));"
    "CREATE TABLE IF NOT EXISTS \"values\"(key INTEGER NOT NULL REFERENCES keys(id) ON DELETE CASCADE,"
    " folded TEXT NOT NULL, name TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,"
    " PRIMARY KEY(key, folded)) WITHOUT ROWID;"
    "INSERT OR IGNORE INTO keys VALUES(1, NULL, '', '');"
    "PRAGMA user_version=1;"
    "COMMIT;";

enum StatementId { kFindKey, kAddKey, kQuery, kSet, kDelete, kHasSubKeys, kDeleteKey, kListValues, kListKeys, kCount };
constexpr const char* kStatements[] = {
    "SELECT id FROM keys WHERE parent=?1 AND folded=?2",
    "INSERT INTO keys(parent, folded, name) VALUES(?1, ?2, ?3)",
    "SELECT type, data FROM \"values\" WHERE key=?1 AND folded=?2",
    "INSERT INTO \"values\" VALUES(?1, ?2, ?3, ?4, ?5) ON CONFLICT DO UPDATE SET type=?4, data=?5",
    "DELETE FROM \"values\" WHERE key=?1 AND folded=?2",
    "SELECT 1 FROM keys WHERE parent=?1 LIMIT 1",
    "DELETE FROM keys WHERE id=?1",
    "SELECT name FROM \"values\" WHERE key=?1 ORDER BY folded",
    "SELECT name FROM keys WHERE parent=?1 ORDER BY folded",
};
static_assert(std::size(kStatements) == kCount);

struct ErrorRow {
  int database;
  uint32_t platform;
};
constexpr ErrorRow kErrors[] = {
    {SQLITE_PERM, kSettingDenied},
    {SQLITE_READONLY, kSettingDenied},
    {SQLITE_CANTOPEN, kSettingDenied},
    {SQLITE_AUTH, kSettingDenied},
    {SQLITE_NOMEM, kSettingNoMemory},
    {SQLITE_FULL, 112},
    {SQLITE_IOERR, 1117},
    {SQLITE_BUSY, 170},
    {SQLITE_LOCKED, 170},
    {SQLITE_TOOBIG, kSettingBadName},
    {SQLITE_CONSTRAINT, kSettingKeyDeleted},
};

uint32_t ErrorOf(int result) {
  for (const ErrorRow& row : kErrors) {
    if (row.database == (result & 0xFF)) return row.platform;
  }
  constexpr uint32_t kGeneralFailure = 31;
  return kGeneralFailure;
}

bool IsDamage(int result) { return (result & 0xFF) == SQLITE_CORRUPT || (result & 0xFF) == SQLITE_NOTADB; }

/// One process at a time opens, makes or sets aside a file. Without a place for the lock nobody can do the latter two.
class OpenLock {
 public:
  explicit OpenLock(const std::string& file)
      : descriptor_(open((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (descriptor_ >= 0) flock(descriptor_, LOCK_EX);
  }
  ~OpenLock() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenLock(const OpenLock&) = delete;
  OpenLock& operator=(const OpenLock&) = delete;

 private:
  int descriptor_;
};

void MakeFolderOf(const std::string& file) {
  for (size_t end = file.find('/', 1); end != std::string::npos; end = file.find('/', end + 1)) {
    mkdir(file.substr(0, end).c_str(), 0700);
  }
}

/// A file name as a URI, whose own signs are escaped.
std::string UriOf(const std::string& file, const char* query) {
  std::string uri = "file:";
  for (const char c : file) {
    if (c == '%' || c == '?' || c == '#') {
      char escaped[4];
      std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(c));
      uri += escaped;
    } else {
      uri += c;
    }
  }
  return uri + query;
}

/// A use of a prepared statement: arguments, rows, and its end.
class Use {
 public:
  explicit Use(sqlite3_stmt* statement) : statement_(statement) {}
  ~Use() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

  Use& Bind(int64_t number) {
    sqlite3_bind_int64(statement_, ++bound_, number);
    return *this;
  }
  Use& Bind(const std::string& text) {
    sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    return *this;
  }
  Use& BindBytes(std::string_view bytes) {
    sqlite3_bind_blob64(statement_, ++bound_, bytes.data(), bytes.size(), SQLITE_STATIC);
    return *this;
  }
  int Step() { return sqlite3_step(statement_); }
  int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string Bytes(int column) const {
    const void* data = sqlite3_column_blob(statement_, column);
    const int bytes = sqlite3_column_bytes(statement_, column);
    return data != nullptr ? std::string(static_cast<const char*>(data), static_cast<size_t>(bytes)) : std::string();
  }

 private:
  sqlite3_stmt* statement_;
  int bound_ = 0;
};

class FileSettings final : public SettingsStore {
 public:
  explicit FileSettings(const std::string& file) : file_(file) {}
  ~FileSettings() override { Close(); }
  FileSettings(const FileSettings&) = delete;
  FileSettings& operator=(const FileSettings&) = delete;

  uint32_t Prepare(bool toWrite, uint64_t* generation) override {
    if (database_ != nullptr && MayHaveMoved(toWrite) && WasMoved()) Close();
    uint32_t result = 0;
    if (database_ == nullptr) {
      result = Open();
      ++generation_;
    }
    *generation = generation_;
    return result;
  }

  uint32_t FindKey(const std::vector<SettingName>& path, bool create, int64_t* key) override {
    const uint32_t result = Walk(path, false, key);
    if (result != kSettingMissing || !create) return result;
    // The walk is done again within the transaction, where nobody adds the same key meanwhile.
    const int begun = Execute("BEGIN IMMEDIATE");
    if (begun != SQLITE_OK) return Failed(begun);
    const uint32_t walked = Walk(path, true, key);
    if (database_ == nullptr) return walked;
    const int ended = Execute(walked == 0 ? "COMMIT" : "ROLLBACK");
    if (walked == 0 && ended != SQLITE_OK) {
      const uint32_t failure = Failed(ended);
      if (database_ != nullptr) Execute("ROLLBACK");
      return failure;
    }
    return walked;
  }

  uint32_t Query(int64_t key, SettingName name, SettingValue* value) override {
    const std::string folded = name.Folded();
    int result;
    {
      Use use = Begin(kQuery);
      result = use.Bind(key).Bind(folded).Step();
      if (result == SQLITE_ROW) {
        value->type = static_cast<uint32_t>(use.Number(0));
        value->data = use.Bytes(1);
        return 0;
      }
    }
    return result == SQLITE_DONE ? kSettingMissing : Failed(result);
  }

  uint32_t Set(int64_t key, SettingName name, uint32_t type, std::string_view data) override {
    const std::string folded = name.Folded();
    const std::string shown = name.Shown();
    int result;
    {
      Use use = Begin(kSet);
      result = use.Bind(key).Bind(folded).Bind(shown).Bind(int64_t{type}).BindBytes(data).Step();
    }
    return result == SQLITE_DONE ? 0 : Failed(result);
  }

  uint32_t Delete(int64_t key, SettingName name) override {
    const std::string folded = name.Folded();
    int result;
    {
      Use use = Begin(kDelete);
      result = use.Bind(key).Bind(folded).Step();
    }
    return Deleted(result);
  }

  uint32_t DeleteKey(int64_t key, bool withSubKeys) override {
    if (!withSubKeys) {
      int found;
      {
        Use use = Begin(kHasSubKeys);
        found = use.Bind(key).Step();
      }
      if (found == SQLITE_ROW) return kSettingDenied;
      if (found != SQLITE_DONE) return Failed(found);
    }
    int result;
    {
      Use use = Begin(kDeleteKey);
      result = use.Bind(key).Step();
    }
    return Deleted(result);
  }

  uint32_t ListValues(int64_t key, std::vector<std::u16string>* names) override {
    return List(kListValues, key, names);
  }
  uint32_t ListKeys(int64_t key, std::vector<std::u16string>* names) override { return List(kListKeys, key, names); }

 private:
  Use Begin(StatementId id) { return Use(statements_[id]); }
  int Execute(const char* text) { return sqlite3_exec(database_, text, nullptr, nullptr, nullptr); }

  /// A look at the file's name costs as much as the rest of a read, so reads do it ten times a second.
  bool MayHaveMoved(bool toWrite) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    const int64_t tenth = now.tv_sec * 10 + now.tv_nsec / 100'000'000;
    if (!toWrite && tenth == lastLook_) return false;
    lastLook_ = tenth;
    return true;
  }

  /// Another process has set the file aside, or somebody has deleted it.
  bool WasMoved() {
    int moved = 0;
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
  }

  void Close() {
    for (sqlite3_stmt*& statement : statements_) {
      sqlite3_finalize(statement);
      statement = nullptr;
    }
    sqlite3_close(database_);
    database_ = nullptr;
  }

  uint32_t Deleted(int result) {
    if (result != SQLITE_DONE) return Failed(result);
    return sqlite3_changes(database_) != 0 ? 0 : kSettingMissing;
  }

  /// What a call that failed answers. A damaged file is set aside, so that the next attempt meets a fresh one.
  uint32_t Failed(int result) {
    if (!IsDamage(result)) return ErrorOf(result);
    if (isReadOnly_) return kSettingDamaged;
    const OpenLock lock(file_);
    const bool isSuccessor = WasMoved();
    Close();
    if (!isSuccessor) SetAside();
    return kReplaced;
  }

  uint32_t Walk(const std::vector<SettingName>& path, bool create, int64_t* key) {
    *key = kRootKey;
    for (const SettingName& part : path) {
      const std::string folded = part.Folded();
      int result;
      {
        Use use = Begin(kFindKey);
        result = use.Bind(*key).Bind(folded).Step();
        if (result == SQLITE_ROW) *key = use.Number(0);
      }
      if (result == SQLITE_ROW) continue;
      if (result != SQLITE_DONE) return Failed(result);
      if (!create) return kSettingMissing;
      const std::string shown = part.Shown();
      {
        Use use = Begin(kAddKey);
        result = use.Bind(*key).Bind(folded).Bind(shown).Step();
      }
      if (result != SQLITE_DONE) return Failed(result);
      *key = sqlite3_last_insert_rowid(database_);
    }
    return 0;
  }

  uint32_t List(StatementId id, int64_t key, std::vector<std::u16string>* names) {
    names->clear();
    int result;
    {
      Use use = Begin(id);
      use.Bind(key);
      while ((result = use.Step()) == SQLITE_ROW) names->push_back(FromUtf8(use.Bytes(0).c_str()));
    }
    return result == SQLITE_DONE ? 0 : Failed(result);
  }

  uint32_t Open() {
    MakeFolderOf(file_);
    const OpenLock lock(file_);
    int result = OpenForWriting();
    if (IsDamage(result)) {
      Close();
      SetAside();
      result = OpenForWriting();
    }
    const int reason = result & 0xFF;
    if (reason == SQLITE_CANTOPEN || reason == SQLITE_READONLY || reason == SQLITE_PERM) {
      Close();
      if (OpenForReading() == SQLITE_OK) return 0;
    }
    if (result == SQLITE_OK) return 0;
    Close();
    return IsDamage(result) || result == SQLITE_SCHEMA ? kSettingDamaged : ErrorOf(result);
  }

  int OpenForWriting() {
    isReadOnly_ = false;
    int result = sqlite3_open_v2(file_.c_str(), &database_,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (result != SQLITE_OK) return result;
    // Where shared memory can't be had, as on network homes, the answer is another mode and no failure.
    sqlite3_busy_timeout(database_, kWaitMilliseconds);
    result = Execute("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON");
    if ((result & 0xFF) == SQLITE_IOERR || (result & 0xFF) == SQLITE_CANTOPEN) {
      result = Execute("PRAGMA journal_mode=DELETE; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON");
    }
    if (result != SQLITE_OK) return result;
    int format = 0;
    result = ReadFormat(&format);
    if (result == SQLITE_OK && format == 0) result = Execute(kSchema);
    if (result == SQLITE_OK && format > kFormat) result = SQLITE_SCHEMA;
    return result == SQLITE_OK ? PrepareStatements() : result;
  }

  /// A file that can't be written is read as it stands.
  int OpenForReading() {
    isReadOnly_ = true;
    const std::string uri = UriOf(file_, "?immutable=1");
    int result = sqlite3_open_v2(uri.c_str(), &database_,
                                 SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (result == SQLITE_OK) result = PrepareStatements();
    if (result != SQLITE_OK) Close();
    return result;
  }

  int ReadFormat(int* format) {
    sqlite3_stmt* statement = nullptr;
    int result = sqlite3_prepare_v2(database_, "PRAGMA user_version", -1, &statement, nullptr);
    if (result == SQLITE_OK && (result = sqlite3_step(statement)) == SQLITE_ROW) {
      *format = sqlite3_column_int(statement, 0);
      result = SQLITE_OK;
    }
    sqlite3_finalize(statement);
    return result;
  }

  int PrepareStatements() {
    for (int i = 0; i < kCount; ++i) {
      const int result =
          sqlite3_prepare_v3(database_, kStatements[i], -1, SQLITE_PREPARE_PERSISTENT, &statements_[i], nullptr);
      if (result == SQLITE_OK) continue;
      // Tables that a file of ours lacks are damage too.
      return result == SQLITE_ERROR && !isReadOnly_ ? SQLITE_CORRUPT : result;
    }
    return SQLITE_OK;
  }

  /// Keeps a damaged file, with the writes that hadn't reached it yet, under a name of its own.
  void SetAside() {
    std::string kept;
    for (int i = 1; kept.empty() || access(kept.c_str(), F_OK) == 0; ++i) {
      kept = file_ + ".damaged-" + std::to_string(i);
    }
    if (rename(file_.c_str(), kept.c_str()) != 0) return;
    rename((file_ + "-wal").c_str(), (kept + "-wal").c_str());
    unlink((file_ + "-shm").c_str());
    std::fprintf(stderr, "marlo110k: The settings file \"%s\" is damaged. It is kept as \"%s\".\n", file_.c_str(),
                 kept.c_str());
  }

  std::string file_;
  sqlite3* database_ = nullptr;
  sqlite3_stmt* statements_[kCount] = {};
  int64_t lastLook_ = 0;
  uint64_t generation_ = 0;
  bool isReadOnly_ = false;
};

}  // namespace

std::unique_ptr<SettingsStore> MakeFileSettings(const std::string& file) {
  return std::make_unique<FileSettings>(file);
}

}  // namespace plat
