// rule_model.h: what rules do, said a second time and as simply as possible: values are texts, levels are
// vectors, and every failure appends its lines. What the library does is compared with it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace model {

using Texts = std::vector<std::string>;

// --- Definitions and messages ----------------------------------------------------------------------------

// The nodes that stand in one index; a loop has the level of its body.
struct Kind;
struct NodeKind {
  std::string sName;
  const Kind *pBody = nullptr;  // of a loop
};
struct Kind {
  std::vector<NodeKind> nodes;
};

struct Level;
struct Slot {
  std::string sText;
  std::vector<std::shared_ptr<Level>> repetitions;
  bool bLoop = false;  // has been started
};
struct Level {
  explicit Level(size_t nSlots) : slots(nSlots) {}
  std::vector<Slot> slots;
};

// --- Rules -----------------------------------------------------------------------------------------------

// An operand, by its code: 0 source, 1 destination, 2 none, 3 constant, 4 function, 10 count.
struct Operand {
  int nCode;
  std::string sText;  // constant, or name of the function
  int nPosition = -1;
  std::vector<Operand> args = {};
};

// A rule, by its code: 6 copy, 7 case, 8 loop, 9 SQL, 11 mapping; anything else is skipped.
struct Rule {
  int nCode;
  struct Choice {  // a case with its judges, or an entry with its tag
    std::vector<std::pair<Operand, Operand>> judges;
    std::optional<Operand> tag;
    std::vector<Rule> rules;
  };
  std::vector<Operand> from = {};  // copy, mapping: one; SQL: the pieces
  std::vector<Operand> to = {};    // copy: one; SQL: the fields
  std::vector<Choice> choices = {};
  // of a loop: the slots, -1 for the level itself, and the names as they are logged
  int nFrom = -1;
  int nTo = -1;
  std::string sFrom = "";
  std::string sTo = "";
  std::vector<Rule> rules = {};
};

// What the database answers to a statement: a code of a failing call (empty: none), or the row.
struct Answer {
  std::string sFailing;
  bool bRow = true;
  Texts columns;
};
Answer ask(const std::string &sStatement);

// --- Running them ----------------------------------------------------------------------------------------

class Run {
 public:
  explicit Run(size_t nCapacity) : m_nCapacity(nCapacity) {}

  bool rules(Level &src, Level &dst, const std::vector<Rule> &list) {
    for (size_t i = 0; i < list.size(); ++i) {
      if (rule(src, dst, list[i])) continue;
      lines.push_back("Do Convert Rule [" + std::to_string(i + 1) + "] err!!");
      return false;
    }
    return true;
  }

  Texts lines;

 private:
  using Found = std::optional<std::string>;

  bool failed(const std::string &sLine) {
    lines.push_back(sLine);
    return false;
  }
  // The line of an operand that cannot be resolved.
  bool isNull(const std::string &sName, const std::string &sField) {
    return failed("[" + sName + " = GetValue(ptSrcValueList, ptDstValueList, " + sField +
                  ", ptMemNode)] is NULL");
  }

  Found value(Level &src, Level &dst, const Operand &op) {
    switch (op.nCode) {
      case 0:
        return src.slots.at(static_cast<size_t>(op.nPosition)).sText;
      case 1:
        return dst.slots.at(static_cast<size_t>(op.nPosition)).sText;
      case 3:
        return op.sText;
      case 4:
        return call(src, dst, op);
      case 10:
        return count(src, op.nPosition);
      default:
        lines.push_back("No Defined Arg Type [" + std::to_string(op.nCode) + "] err!!");
        return {};
    }
  }

  // "join" joins its arguments, "fail" fails behind their evaluation.
  Found call(Level &src, Level &dst, const Operand &op) {
    std::string sJoined;
    for (const Operand &arg : op.args) sJoined += value(src, dst, arg).value_or("~") + "|";
    if (op.sText == "join") return sJoined;
    lines.push_back("Do Func[" + op.sText + "] err!!");
    return {};
  }

  Found count(const Level &src, int nPosition) {
    const std::string sPosition = std::to_string(nPosition);
    if (static_cast<size_t>(nPosition) >= src.slots.size()) {
      lines.push_back("Value Index[" + sPosition + "] < 0 or >= max [" + std::to_string(src.slots.size()) +
                      "] err!!");
    } else if (!src.slots[static_cast<size_t>(nPosition)].sText.empty()) {
      lines.push_back("value Index[" + sPosition + "] is not LoopValueList");
    } else {
      return std::to_string(src.slots[static_cast<size_t>(nPosition)].repetitions.size());
    }
    lines.push_back("Get Field Index[" + sPosition + "] Loop Num err!!");
    return {};
  }

  void store(Level &src, Level &dst, const Operand &op, const std::string &sText) {
    (op.nCode == 0 ? src : dst).slots.at(static_cast<size_t>(op.nPosition)).sText = sText;
  }

  bool rule(Level &src, Level &dst, const Rule &r) {
    switch (r.nCode) {
      case 6:
        return copy(src, dst, r) || failed("CvtCopy Err!!");
      case 7:
        return choose(src, dst, r) || failed("CvtCase Err!!");
      case 8:
        return loop(src, dst, r) || failed("CVT_TYPE_LOOP Err!!");
      case 9:
        return sql(src, dst, r) || failed("CvtSql Err!!");
      case 11:
        return map(src, dst, r) || failed("CvtMapping err!!");
      default:
        return true;
    }
  }

  bool copy(Level &src, Level &dst, const Rule &r) {
    if (!value(src, dst, r.to[0])) return isNull("ptDst", "ptCopy->ptDstArgs");
    const Found found = value(src, dst, r.from[0]);
    if (!found) return isNull("ptSrc", "ptCopy->ptSrcArgs");
    store(src, dst, r.to[0], *found);
    return true;
  }

  bool choose(Level &src, Level &dst, const Rule &r) {
    for (const Rule::Choice &choice : r.choices) {
      bool bHolds = choice.judges.empty();
      for (size_t i = 0; i < choice.judges.size() && !bHolds; ++i) {
        const Found right = value(src, dst, choice.judges[i].second);
        if (!right) return isNull("ptDst", "ptJudge->ptDstArgs");
        const Found left = value(src, dst, choice.judges[i].first);
        if (!left) return isNull("ptSrc", "ptJudge->ptSrcArgs");
        bHolds = *left == *right;
      }
      if (bHolds) return rules(src, dst, choice.rules);
    }
    return true;
  }

  bool map(Level &src, Level &dst, const Rule &r) {
    const Found found = value(src, dst, r.from[0]);
    if (!found) return isNull("ptMapValue", "ptMapping->ptMapArgs");
    for (const Rule::Choice &choice : r.choices) {
      if (!choice.tag) lines.push_back("[ptArgs] is NULL");
      const Found tag = choice.tag ? value(src, dst, *choice.tag) : Found();
      if (!tag) return isNull("ptTagValue", "p->ptTagArgs");
      if (*tag == *found) return rules(src, dst, choice.rules) || failed("StructConvert err!!\n");
    }
    return true;
  }

  bool loop(Level &src, Level &dst, const Rule &r) {
    const bool bSet = r.nFrom < 0 && r.nTo >= 0 && !r.sFrom.empty() && r.sFrom[0] == 'S';
    Slot *const pFrom = r.nFrom < 0 ? nullptr : &src.slots.at(static_cast<size_t>(r.nFrom));
    Slot *const pTo = r.nTo < 0 ? nullptr : &dst.slots.at(static_cast<size_t>(r.nTo));
    const size_t nCount = bSet ? pTo->repetitions.size() : pFrom == nullptr ? 1 : pFrom->repetitions.size();
    for (size_t i = 0; i < nCount; ++i) {
      if (pTo != nullptr && !bSet) {
        pTo->bLoop = true;
        pTo->repetitions.push_back(std::make_shared<Level>(m_nCapacity));
      }
      Level &from = pFrom == nullptr ? src : *pFrom->repetitions[i];
      Level &to = pTo == nullptr ? dst : bSet ? *pTo->repetitions[i] : *pTo->repetitions.back();
      if (rules(from, to, r.rules)) continue;
      return failed("Convert Loop[" + std::to_string(i) + "/" + std::to_string(nCount) + "] From[" + r.sFrom +
                    "] to [" + r.sTo + "]  convert err!!");
    }
    return true;
  }

  bool sql(Level &src, Level &dst, const Rule &r) {
    std::string sStatement;
    for (const Operand &piece : r.from) {
      const Found found = value(src, dst, piece);
      if (!found) return isNull("ptValue", "ptArgs");
      sStatement += *found;
    }
    const Answer answer = ask(sStatement);
    const std::string sWhy = " sqlcode[7:no]";
    if (r.to.empty())
      return answer.sFailing.empty() || failed("CvtOraExecSql[" + sStatement + "] err!!" + sWhy);
    if (!answer.sFailing.empty())
      return failed("CvtOraInq " + answer.sFailing + " err!! sql[" + sStatement + "]" + sWhy);
    if (!answer.bRow) {
      lines.push_back("Warning: sql[" + sStatement + "] not find data!!");
      return true;
    }
    for (size_t i = 0; i < answer.columns.size() && i < r.to.size(); ++i)
      store(src, dst, r.to[i], answer.columns[i]);
    return true;
  }

  size_t m_nCapacity;
};

}  // namespace model
