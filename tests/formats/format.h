// format.h: what the suite knows of a format plug-in: how its definitions are written, and what it cannot do.
//
// Every plug-in has a file here with one class, and gets all tests of this folder by it.
#pragma once

#include <string>
#include <vector>

namespace formats {

// A node of a message of the suite, whatever its format.
struct Item {
  enum class Kind { Constant, Text, Digits, Count, Group, Loop };
  Kind kind;
  std::string name;
  int most;                        // characters, digits, or repetitions
  std::vector<Item> members = {};  // of a group, and of each repetition
  std::string count = {};  // of a loop: the field with the number of repetitions, which stands before it
  int place = 0;           // among the outermost nodes, from 1; 0: inside another
};
using Items = std::vector<Item>;

// The value of a constant field.
constexpr const char *kConstant = "0600";

class Format {
 public:
  virtual ~Format() = default;

  // The plug-in, as the configuration names it.
  virtual std::string name() const = 0;

  // A definition file. charset: of the message's texts; empty: the format's own.
  std::string definition(const std::string &message, const Items &items,
                         const std::string &charset = "") const;

  // --- what it can do ------------------------------------------------------------------------------------

  // Characters that a text may hold, besides letters, digits and blanks inside.
  virtual std::string signs() const { return "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"; }

  // Character sets that its messages may have.
  virtual std::vector<std::string> charsets() const { return {"UTF-8"}; }

  // Whether a field may hold the number of a loop's repetitions.
  virtual bool countsLoops() const { return true; }

  // Whether a message ends by itself, so that another may follow in the same buffer.
  virtual bool endsByItself() const { return true; }

  // Whether the beginning of a message may be a message.
  virtual bool prefixMayBeMessage() const { return false; }

 protected:
  // The plug-in's records, as elements with their __ID; empty: none.
  virtual std::string messageRecord(const std::string &charset) const = 0;
  virtual std::string fieldRecord(const Item &field) const = 0;
  virtual std::string groupRecord(const Item &group) const = 0;
  virtual std::string loopRecord(const Item &loop) const = 0;

 private:
  std::string node(const Item &item, const std::string &id) const;
  std::string chain(const Items &items, const std::string &id) const;
};

// All plug-ins.
const std::vector<const Format *> &allFormats();

}  // namespace formats
