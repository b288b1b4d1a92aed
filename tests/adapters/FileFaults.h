#pragma once

// What can happen to an SQLite file: damage, and obstacles that end. Plays the steps of the tables
// tests/golden/store/faults.txt and tests/golden/cache/faults.txt.

#include <algorithm>
#include <csignal>
#include <memory>
#include <string>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include "tests/adapters/SQLiteTest.h"

namespace TalvoConsentSDK {

class FileFaults {
 public:
  explicit FileFaults(const fs::path& path) : file(path) {}

  /// Puts the sound file in place, and makes the fault happen to it: steps separated by commas.
  void begin(const std::string& fault) {
    fs::remove_all(parent);
    write(file, sound);
    for (const std::string& step : split(fault, ',')) {
      const Texts parts = words(step);
      if (parts.empty()) continue;
      const std::string &verb = parts.front(), &object = parts.back();
      const std::string sql = step.substr(std::min(step.size(), verb.size() + 1));
      if (verb == "text") write(file, std::string(std::stoul(object), 'x'));
      if (verb == "fill") write(file, sound.substr(0, std::stoul(object)) + std::string(20'000, '\x7F'));
      if (verb == "cut") fs::resize_file(file, std::stoul(object));
      if (verb == "flip") overwrite(file, sound, std::stoul(object), '\x55');
      if (verb == "zero") overwrite(file, sound, std::stoul(object), '\0');
      if (verb == "journal") write(journalFile, journal);
      if (verb == "journal-cut") fs::resize_file(journalFile, std::stoul(object));
      if (verb == "journal-flip") overwrite(journalFile, journal, std::stoul(object), '\x55');
      if (verb == "sql") OtherConnection(file).execute(sql.c_str());
      if (verb == "lock") (other = std::make_unique<OtherConnection>(file))->execute(sql.c_str());
      if (verb == "file" || verb == "directory") fs::remove_all(parent);
      if (verb == "file") write(parent, "x");
      if (verb == "directory") fs::create_directories(file / "x");
      if (verb == "mode")
        fs::permissions(object == "file" ? file : parent, fs::perms(std::stoi(parts[1], nullptr, 8)));
      if (verb == "become") becomeOrdinary();
      if (verb == "full") limitFiles(std::stoul(object));
    }
    isReplaced = fault == "file" || fault == "directory" || fault.ends_with("user_version = 2");
  }

  /// Undoes the fault, except for damage, which cannot be undone.
  void end() {
    other.reset();
    limitFiles(RLIM_INFINITY);
    ASSERT_EQ(::setresuid(user, user, user), 0);
    if (std::exchange(isReplaced, false)) fs::remove_all(parent), write(file, sound);
    fs::permissions(parent, fs::perms(0700));
    fs::permissions(file, fs::perms(0600));
  }

  /// The faults of a row: one, or if the last step ends in a star, one for every multiple of 1024 bytes.
  Texts all(const std::string& fault) const {
    if (!fault.ends_with("*")) return {fault};
    const std::size_t size = (fault.find("journal-") == fault.npos ? sound : journal).size();
    Texts faults;
    for (std::size_t at = 1024; at < size; at += 1024)
      faults.push_back(fault.substr(0, fault.size() - 1) + std::to_string(at));
    return faults;
  }

  const fs::path file, parent = file.parent_path(), journalFile = file.string() + "-wal";
  std::string sound, journal;  // contents; set them before the first fault

 private:
  static void overwrite(const fs::path& path, std::string content, std::size_t at, char byte) {
    content.replace(at, std::min<std::size_t>(64, content.size() - at), 64, byte);
    write(path, content);
  }

  // Root ignores permissions, so the process gives up its rights.
  void becomeOrdinary() {
    if (user != 0) return;
    constexpr uid_t nobody = 65534;
    for (const fs::path& each : {parent.parent_path(), parent, file})
      ASSERT_EQ(::chown(each.c_str(), nobody, nobody), 0);
    ASSERT_EQ(::setresuid(nobody, nobody, 0), 0);
  }

  static void limitFiles(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }

  const uid_t user = ::getuid();
  bool isReplaced = false;
  std::unique_ptr<OtherConnection> other;
};

}  // namespace TalvoConsentSDK
