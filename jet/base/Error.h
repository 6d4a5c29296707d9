#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace kestrelon::jet {

// Number of an engine error, in the form that database clients know (an HRESULT).
namespace code {
inline constexpr std::uint32_t kGeneric = 0x80004005;  // file missing, unreadable, in use, not a database
inline constexpr std::uint32_t kSyntax = 0x80040E14;   // the statement cannot be understood
inline constexpr std::uint32_t kMissingParameter = 0x80040E10;  // a name that is no column of the table
inline constexpr std::uint32_t kNoSuchTable = 0x80040E37;
inline constexpr std::uint32_t kTypeMismatch = 0x80040E07;
inline constexpr std::uint32_t kTooLong = 0x80040E57;   // a text longer than its column
inline constexpr std::uint32_t kPassword = 0x80040E4D;  // the file asks for a password
inline constexpr std::uint32_t kNoCurrentRow = 0x800A0BCD;
inline constexpr std::uint32_t kObjectClosed = 0x800A0E78;
inline constexpr std::uint32_t kObjectOpen = 0x800A0E79;
inline constexpr std::uint32_t kNoSuchField = 0x800A0CC1;  // Fields("x") where the recordset has no column x
}  // namespace code

// Every failure of the engine. The connection stays usable after one.
class Error : public std::exception {
 public:
  Error(std::uint32_t number, std::u16string description);

  // One of `code::…`.
  std::uint32_t Number() const noexcept { return number_; }
  // A sentence for the user, in English.
  const std::u16string& Description() const noexcept { return description_; }
  // The description as UTF-8.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  std::uint32_t number_;
  std::u16string description_;
  std::string what_;
};

// The file's bytes contradict the format. Thrown for any damaged or hostile input; carries code::kGeneric and
// a description that begins "Unrecognized database format" or names the page and offset of the contradiction.
class CorruptFile : public Error {
 public:
  explicit CorruptFile(std::u16string description) : Error(code::kGeneric, std::move(description)) {}
};

// The system refuses a file: it is missing, held by another program or may not be written, or the disk is
// full. What the file holds is not in question, and a later try may do better; neither holds where the system
// cannot read it, which is a plain Error. Carries code::kGeneric.
class FileRefused : public Error {
 public:
  explicit FileRefused(std::u16string description) : Error(code::kGeneric, std::move(description)) {}
};

// UTF-16 and UTF-8; a unit that is no valid text becomes U+FFFD.
std::string ToUtf8(std::u16string_view text);
std::u16string FromUtf8(std::string_view text);

}  // namespace kestrelon::jet
