// trigger.h: which of a system's calls fail.
#pragma once

namespace faults {

// Counts the calls of one kind and tells those that are to fail. Needs no heap and is there before main().
class Trigger {
 public:
  // Counts from here. Call number nFirst fails (0: none does), with bForEver each one behind it, too.
  void arm(long nFirst, bool bForEver) {
    m_nCalls = 0;
    m_nFirst = nFirst;
    m_bForEver = bForEver;
    m_bArmed = true;
  }
  // No call fails or counts any more.
  void disarm() { m_bArmed = false; }

  // To be asked at each call.
  bool fails() {
    if (!m_bArmed) return false;
    ++m_nCalls;
    return m_nFirst > 0 && (m_bForEver ? m_nCalls >= m_nFirst : m_nCalls == m_nFirst);
  }

  long calls() const { return m_nCalls; }

 private:
  long m_nCalls = 0;
  long m_nFirst = 0;
  bool m_bForEver = false;
  bool m_bArmed = false;
};

}  // namespace faults
