#pragma once

#include <cstddef>
#include <string>

/// Builds what the benchmarks read, at paths relative to the temporary home directory.
namespace Data {

/// Log lines, cut at `size` bytes. One in four is a request's.
std::string log(std::size_t size);

/// One of today's Gemini chats, cut at `size` bytes. Answers are three times as long as prompts.
std::string chat(std::size_t size);

/// A sparse file of `size` bytes, and 256 KiB of log after them.
void writeSparseLog(const std::string& file, std::size_t size);

/// 500 directories of 200 empty files each, all of them named *.jsonl.
void writeTree(const std::string& root);

/// OpenCode's database with that many messages of the last hours.
void writeDatabase(const std::string& file, int messages);

/// Settings and logs of all four assistants; Claude and Codex are signed out.
void writeAssistants();

/// 5,000 older sessions of 4 KiB, half of them Claude's and half of them Codex's.
void writeSessions();

/// Signs Claude and Codex in.
void writeLogins();

}  // namespace Data
