#pragma once

#include <cstddef>
#include <string>

/// Builds what the benchmarks read, at paths relative to the temporary home directory.
namespace Data {

/// Log lines, one in four of which tells of a request, cut at `size` bytes.
std::string log(std::size_t size);

/// A chat of Gemini's of today, whose answers are three times as long as the prompts, cut at `size`
/// bytes.
std::string chat(std::size_t size);

/// A file of `size` bytes without blocks on the disk and then 256 KiB of log.
void writeSparseLog(const std::string& file, std::size_t size);

/// 500 folders of 200 empty files each, every one of them named *.jsonl.
void writeTree(const std::string& root);

/// OpenCode's database with so many messages of the last hours.
void writeDatabase(const std::string& file, int messages);

/// Settings and logs of all four assistants; Claude and Codex are signed out.
void writeAssistants();

/// Signs Claude and Codex in.
void writeLogins();

}  // namespace Data
