// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/BackupFile.h"

#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/FileBeside.h"
#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/FileHeader.h"
#include "voltvk/engine/state/FileSafety.h"
#include "voltvk/engine/state/Layout.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/StateFile.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>

namespace voltvk {

namespace {

namespace fs = std::filesystem;

constexpr const char* USE_ANOTHER = "use another backup";

/** What a restored state has of its backup, what is referred to before what refers to it. */
constexpr std::array<const char*, 9> CONFIGURATION = {"backing",     "drive",  "pool",
                                                      "pool_member", "volume", "volume_extent",
                                                      "laid_on_ssd", "chunk",  "kernel_counter"};

/** @param which the end of the query for the rows @param insertion how it begins */
void copyRows(
    Connection& from, Connection& to, const std::string& table, const std::string& which = "",
    const std::string& insertion = "INSERT") {
  Statement columns(
      to, "SELECT group_concat(name, ', '), group_concat('?', ', ') FROM pragma_table_info(?)", table);
  columns.step();
  const std::string names = columns.text(0);
  Statement rows(from, "SELECT " + names + " FROM " + table + which);
  Statement insert(to, insertion + " INTO " + table + "(" + names + ") VALUES(" + columns.text(1) + ")");
  while (rows.step()) {
    insert.runWithRowOf(rows);
  }
}

/** Identifiers that were given, before the backup or since, are not given again. */
void raiseNumbers(Connection& from, Connection& to) {
  Statement settings(
      from, "SELECT value, name FROM setting WHERE name IN"
            " ('policy_running', 'drives_left_out', 'last_drive_number', 'last_virtual_drive')");
  Statement set(to, "UPDATE setting SET value = iif(name LIKE 'last%', max(value, ?1), ?1) WHERE name = ?2");
  while (settings.step()) {
    set.runWithRowOf(settings);
  }
  Statement sequences(from, "SELECT seq, name FROM sqlite_sequence WHERE name IN ('pool', 'volume')");
  Statement begin(
      to, "INSERT INTO sqlite_sequence(seq, name) SELECT ?1, ?2"
          " WHERE NOT EXISTS (SELECT 1 FROM sqlite_sequence WHERE name = ?2)");
  Statement raise(to, "UPDATE sqlite_sequence SET seq = max(seq, ?1) WHERE name = ?2");
  while (sequences.step()) {
    begin.runWithRowOf(sequences);
    raise.runWithRowOf(sequences);
  }
}

/** What intents the copy has are those of another day, and stay behind. */
void replaceConfiguration(Connection& from, Connection& to, bool withEvents) {
  to.execute("DELETE FROM intent");
  for (auto table = CONFIGURATION.rbegin(); table != CONFIGURATION.rend(); ++table) {
    to.execute((std::string("DELETE FROM ") + *table).c_str());
  }
  for (const char* table : CONFIGURATION) {
    copyRows(from, to, table);
  }
  raiseNumbers(from, to);
  if (withEvents) {
    to.execute("DELETE FROM event");
    copyRows(from, to, "event");
  }
}

void requirePlace(const std::string& path, bool mayReplace) {
  struct stat status {};
  const bool exists = ::lstat(path.c_str(), &status) == 0;
  require(!exists || S_ISREG(status.st_mode), TVK_INVALID_ARGUMENT, [&] {
    return path + " is not a regular file and is left alone; name another file";
  });
  require(!exists || mayReplace, TVK_INVALID_ARGUMENT, [&] {
    return path + " exists; replace it with --force, or name another file";
  });
  const std::string directory = fs::path(path).parent_path();
  if (const std::optional<Unsafe> unsafe = checkDirectory(directory)) {
    throw Refusal(
        TVK_INVALID_ARGUMENT, "a backup is not safe in the directory " + directory + ", which " +
                                  unsafe->what + "; " + unsafe->advice + ", or name a file in another one");
  }
}

}  // namespace

void BackupFile::write(
    Connection& state, const std::string& path, const std::string& product, bool mayReplace) {
  const std::string target = StateFile(path).path();
  requirePlace(target, mayReplace);
  Connection copy("");
  copy.copyFrom(state);
  FileBeside file(target);
  try {
    copy.execute(
        "DROP TABLE IF EXISTS backup; CREATE TABLE backup(product TEXT NOT NULL, time INTEGER NOT NULL)");
    Statement(copy, "INSERT INTO backup VALUES(?, ?)", product, std::time(nullptr)).run();
    // Makes one file of it, without the space that a state reserves.
    Statement(copy, "VACUUM INTO ?", file.name()).run();
  } catch (const DatabaseError& error) {
    throw Refusal(
        TVK_INTERNAL, target + " cannot be written (" + error.what() +
                          "); see that its disk and that of temporary files work and have room");
  }
  constexpr mode_t OWNER_ONLY = 0600;
  if (mayReplace) {
    file.takePlace(OWNER_ONLY);
  } else if (!file.takeFreePlace(OWNER_ONLY)) {
    requirePlace(target, false);
  }
}

BackupFile::BackupFile(const std::string& path) : m_path(StateFile(path).path()) {
  requireTrusted();
  try {
    Connection copy("");
    copy.copyFrom(*std::make_unique<Connection>(m_path, Connection::Access::Frozen));
    Statement check(copy, "PRAGMA integrity_check(1)");
    if (check.step() && check.text(0) != "ok") {
      std::string fault = check.text(0);
      std::replace(fault.begin(), fault.end(), '\n', ' ');
      throw DatabaseError::ofDamage(fault);
    }
    check.rebind();
    readLabel(copy);
    convert(copy);
    // All rules of the present tables apply to what they are given.
    Layout::create(m_contents);
    m_contents.execute("PRAGMA foreign_keys = ON");
    replaceConfiguration(copy, m_contents, true);
    SnapshotReader(m_contents).configuration();
  } catch (const DatabaseError& error) {
    refuse(std::string("is damaged (") + error.what() + ")", USE_ANOTHER);
  }
}

void BackupFile::refuse(const std::string& what, const std::string& advice) const {
  throw Refusal(TVK_INVALID_ARGUMENT, "the backup " + m_path + " " + what + "; " + advice);
}

void BackupFile::requireTrusted() const {
  // O_NONBLOCK: a pipe in place of the file must not hang the caller.
  const FileDescriptor file(
      ::open(m_path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) {
    const int error = errno;
    refuse(
        error == ELOOP ? "is a symbolic link, which is not followed"
                       : std::string("cannot be opened: ") + std::strerror(error),
        error == ELOOP ? "name the file itself" : "check the name of the file");
  }
  struct stat status {};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    refuse("is not a regular file", "name the file that `voltvkctl backup` has written");
  }
  const std::string directory = fs::path(m_path).parent_path();
  std::optional<Unsafe> unsafe = checkFile(file.get(), false);
  if (unsafe) {
    refuse(unsafe->what, unsafe->advice);
  }
  unsafe = checkDirectory(directory);
  if (unsafe) {
    refuse("is not safe: its directory " + directory + " " + unsafe->what, unsafe->advice);
  }
  const std::optional<FileHeader> header = FileHeader::read(file.get());
  if (!header || header->applicationId != STATE_APPLICATION_ID || header->version == 0) {
    refuse("is not a backup of a state", "name the file that `voltvkctl backup` has written");
  }
  if (header->version > STATE_VERSION) {
    refuse(
        "is from a newer version (layout " + std::to_string(header->version) + ")",
        "install that version, or use an older backup");
  }
  for (const char* suffix : {"-wal", "-journal"}) {
    std::error_code error;
    if (fs::file_size(m_path + suffix, error) > 0 && !error) {
      refuse(
          std::string("belongs together with the file ") + suffix +
              " beside it, as a state does that is in use",
          "make a backup with `voltvkctl backup`");
    }
  }
  if (static_cast<std::uint64_t>(status.st_size) < header->size) {
    refuse("was cut short", USE_ANOTHER);
  }
}

void BackupFile::readLabel(Connection& copy) {
  m_label.layout = copy.number("PRAGMA user_version");
  if (copy.number("SELECT count(*) FROM sqlite_master WHERE name = 'backup'") > 0) {
    Statement label(copy, "SELECT product, time FROM backup");
    if (label.step()) {
      m_label.product = label.text(0);
      m_label.time = label.as<std::uint32_t>(1);
    }
  }
}

void BackupFile::convert(Connection& copy) {
  if (m_label.layout < STATE_VERSION) {
    copy.execute("PRAGMA foreign_keys = OFF");
    Transaction change(copy, Transaction::Kind::Change);
    Layout::upgrade(copy, m_label.layout);
    change.commit();
  }
  m_label.backing = SnapshotReader(copy).backing();
}

void BackupFile::adoptNumbers(Connection& state) {
  Transaction change(m_contents, Transaction::Kind::Change);
  if (m_label.layout == STATE_VERSION) {  // else it may know the same drive by another identity
    copyRows(state, m_contents, "drive", " WHERE virtual = 0 AND present = 1", "INSERT OR IGNORE");
  }
  Statement(
      m_contents, "UPDATE setting SET value = max(value, ?) WHERE name = 'last_drive_number'",
      state.number("SELECT value FROM setting WHERE name = 'last_drive_number'"))
      .run();
  change.commit();
}

void BackupFile::copyTo(Connection& state, bool withEvents) {
  replaceConfiguration(m_contents, state, withEvents);
}

}  // namespace voltvk
