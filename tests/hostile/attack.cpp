#include "attack.h"

#include <functional>

namespace hostile {

namespace {

std::string repeated(const std::string &s, size_t n) {
  std::string all;
  all.reserve(s.size() * n);
  for (size_t i = 0; i < n; ++i) all += s;
  return all;
}

std::string numbered(size_t n, const std::function<std::string(const std::string &)> &piece) {
  std::string all;
  for (size_t i = 0; i < n; ++i) all += piece(std::to_string(i));
  return all;
}

// Entities that each stand for ten of the one before.
std::string bomb() {
  std::string s = "<!ENTITY e0 'ha ha ha ha'>";
  for (int i = 1; i < 30; ++i) {
    s += "<!ENTITY e" + std::to_string(i) + " '" + repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  return s;
}

// As UTF-16, or UTF-32, of an ASCII text.
std::string widened(const std::string &s, size_t nBefore, size_t nBehind) {
  std::string all;
  for (const char c : s) all += std::string(nBefore, '\0') + c + std::string(nBehind, '\0');
  return all;
}

// A stored block of zeros, as gzip writes it, many times over: 1 MiB of file for 1 GiB.
std::string gzipHead() {
  return std::string("\x1F\x8B\x08\0\0\0\0\0\0\x03", 10) +
         repeated(std::string("\xEC\xC1\x01\x01\0\0\0\x80\x90\xFE\xAF\xEE\x08\x0A", 14), 70000);
}

}  // namespace

std::vector<Attack> attacks(const std::string &sBait, const std::string &sOpen, const std::string &sInside,
                            const std::string &sClose) {
  const std::string sWhole = sOpen + sInside + sClose;
  const std::string sRoot = sOpen.substr(1, sOpen.find_first_of(" >") - 1);
  const auto doctype = [&](const std::string &sSubset, const std::string &sUse) {
    return "<!DOCTYPE " + sRoot + " " + sSubset + ">" + sOpen + sInside + sUse + sClose;
  };
  const auto withAttributes = [&](const std::string &sAttributes) {
    return sOpen + sInside + "<x" + sAttributes + "/>" + sClose;
  };
  const std::string sNo = "a DOCTYPE: remove it";
  const std::string sNoMessage = "expected no DOCTYPE";
  const size_t kMany = 200000;
  // Elements and attributes in namespaces of that length.
  const auto elementsIn = [&](size_t nUri, size_t nTimes) {
    return sOpen + sInside + "<x xmlns='" + std::string(nUri, 'u') + "'>" + repeated("<a/>", nTimes) +
           "</x>" + sClose;
  };
  const auto attributesIn = [&](size_t nUri, size_t nTimes) {
    const std::string sHalf(nUri / 2, 'u');
    const auto declaration = [&](const std::string &s) {
      return " xmlns:p" + s + "='" + sHalf + std::to_string(10 + std::stoi(s)) + sHalf + "'";
    };
    const auto attribute = [](const std::string &s) { return " p" + s + ":x=''"; };
    return sOpen + sInside + "<x" + numbered(60, declaration) + ">" +
           repeated("<a" + numbered(60, attribute) + "/>", nTimes) + "</x>" + sClose;
  };
  // The outermost of them is the one that is used.
  const auto manyNamespaces = [&](size_t nTimes) {
    const auto level = [](const std::string &sLevel) {
      return "<x" +
             numbered(60,
                      [&](const std::string &s) { return " xmlns:p" + sLevel + "_" + s + "='" + s + "'"; }) +
             ">";
    };
    return sOpen + sInside + numbered(60, level) + repeated("<a p0_0:x=''/>", nTimes) + repeated("</x>", 60) +
           sClose;
  };
  const std::string sLongUri = "expected a namespace URI of at most 1024 bytes";
  const std::string sSpaces = "expected namespaces of attributes of at most";
  const std::string sCrowded =
      withAttributes(" xmlns:q='" + std::string(1024, 'u') + "'" +
                     numbered(21000, [](const std::string &s) { return " q:a" + s + "=''"; }));
  return {
      {"entity bomb in a text", doctype("[" + bomb() + "]", "&e29;"), sNo, sNoMessage},
      {"entity bomb in an attribute", doctype("[" + bomb() + "]", "<x a='&e29;'/>"), sNo, sNoMessage},
      {"quadratic expansion",
       doctype("[<!ENTITY q '" + std::string(50000, 'q') + "'>]", repeated("&q;", 50000)), sNo, sNoMessage},
      {"external entity of a file", doctype("[<!ENTITY f SYSTEM 'file://" + sBait + "'>]", "&f;"), sNo,
       sNoMessage},
      {"external entity of the net", doctype("[<!ENTITY h SYSTEM 'http://127.0.0.1:9/x'>]", "&h;"), sNo,
       sNoMessage},
      {"parameter entity", doctype("[<!ENTITY % p SYSTEM '" + sBait + "'> %p;]", ""), sNo, sNoMessage},
      {"parameter entity bomb",
       doctype("[<!ENTITY % a '" + std::string(1000, 'a') + "'><!ENTITY % b '" + repeated("&#37;a;", 1000) +
                   "'> %b;]",
               ""),
       sNo, sNoMessage},
      {"definition in a file", doctype("SYSTEM '" + sBait + "'", ""), sNo, sNoMessage},
      {"definition in the net", doctype("PUBLIC '-//x' 'http://127.0.0.1:9/x.dtd'", ""), sNo, sNoMessage},
      {"default attributes", doctype("[<!ATTLIST " + sRoot + " nReload CDATA '1'>]", ""), sNo, sNoMessage},
      {"inclusion",
       sOpen + sInside + "<i:include xmlns:i='http://www.w3.org/2001/XInclude' href='" + sBait +
           "' parse='text'/>" + sClose,
       "", ""},
      {"style sheet", "<?xml-stylesheet href='http://127.0.0.1:9/s.xsl' type='text/xsl'?>" + sWhole, "", ""},
      {"schema in the net",
       sOpen + sInside +
           "<x xmlns:s='http://www.w3.org/2001/XMLSchema-instance' "
           "s:noNamespaceSchemaLocation='http://127.0.0.1:9/x'/>" +
           sClose,
       "", ""},
      {"gzip bomb", gzipHead(), "the file is compressed: unpack it", "expected well-formed XML"},
      {"UTF-7", "<?xml version='1.0' encoding='UTF-7'?>" + sOpen + sInside + "<x a='+ADw-'/>" + sClose,
       "Unescaped '<'", "encoding"},
      {"EBCDIC", "<?xml version='1.0' encoding='IBM037'?>" + sWhole, "?", "encoding"},
      {"unknown encoding", "<?xml version='1.0' encoding='" + std::string(1000, 'E') + "'?>" + sWhole, "?",
       "an XML declaration of at most 512 bytes"},
      {"encoding that is a path", "<?xml version='1.0' encoding='../../" + sBait + "'?>" + sWhole, "?", "?"},
      {"UTF-16 without a mark", widened(sWhole, 0, 1), "?", "?"},
      {"UTF-16 with a mark", "\xFF\xFE" + widened(sWhole, 0, 1), "", ""},
      {"UTF-32", std::string("\0\0\xFE\xFF", 4) + widened(sWhole, 3, 0), "?", "?"},
      {"mark of UTF-8", "\xEF\xBB\xBF" + sWhole, "", ""},
      {"two marks", "\xEF\xBB\xBF\xEF\xBB\xBF" + sWhole, "?", "?"},
      {"mark alone", "\xEF\xBB\xBF", "?", "?"},
      {"a million levels", sOpen + sInside + repeated("<x>", 1000000), "Excessive depth", "open elements"},
      {"a million levels of one name each",
       sOpen + numbered(300000, [](const std::string &s) { return "<x" + s + ">"; }), "Excessive depth",
       "open elements"},
      {"200,000 attributes",
       withAttributes(numbered(kMany, [](const std::string &s) { return " a" + s + "=''"; })),
       "more than 400 attributes", "attributes"},
      {"200,000 namespaces",
       withAttributes(numbered(kMany, [](const std::string &s) { return " xmlns:a" + s + "='u'"; })),
       "more than 300 namespaces", "attributes"},
      {"21,000 attributes in a namespace of 1 KB, in one piece",
       "<!--" + std::string(262200, 'c') + "-->" + sCrowded, "?", "at most 64 attributes, found 21001. "},
      {"the same in UTF-16", "\xFF\xFE" + widened(sCrowded, 0, 1), "?", "bytes of memory to read"},
      {"100,000 elements in a namespace of 400 KB", elementsIn(400000, 100000), "?", sLongUri},
      {"the same and a comment", elementsIn(400000, 100000) + "<!-- -->", "?", sLongUri},
      {"100,000 elements in a namespace of 1 KB and a comment", elementsIn(1000, 100000) + "<!-- -->", "",
       ""},
      {"9,000 attributes in namespaces of 20 KB", attributesIn(20000, 150), "?", sLongUri},
      {"the same and a comment behind", attributesIn(20000, 150) + "<!-- -->", "?", sLongUri},
      {"90,000 attributes in namespaces of 1 KB", attributesIn(1000, 1500), "", sSpaces},
      {"the same and a comment behind it", attributesIn(1000, 1500) + "<!-- -->", "", sSpaces},
      {"60,000 attributes in namespaces of 120 bytes", attributesIn(120, 1000), "", ""},
      {"the same and a comment behind these", attributesIn(120, 1000) + "<!-- -->", "", ""},
      {"3,600 namespaces open", manyNamespaces(100000), "?", ""},
      {"one attribute 200,000 times", withAttributes(repeated(" a=''", kMany)), "?", "at most 64 attributes"},
      {"attribute of 3 MB", withAttributes(" a='" + std::string(3000000, 'a') + "'"), "more than 1 MiB", ""},
      {"attribute of a million references", withAttributes(" a='" + repeated("&#65;", 1000000) + "'"), "?",
       ""},
      {"name of 3 MB", sOpen + "<" + std::string(3000000, 'n') + "/>" + sClose, "?", "?"},
      {"tag that never ends", sOpen + "<x" + std::string(3000000, ' '), "?", "?"},
      {"comment of 3 MB", sOpen + sInside + "<!--" + std::string(3000000, 'c') + "-->" + sClose, "?", ""},
      {"text of 3 MB", sOpen + sInside + "<x>" + std::string(3000000, 't') + "</x>" + sClose, "?", ""},
      {"text of 3 MB that never ends in CDATA", sOpen + sInside + "<![CDATA[" + std::string(3000000, 't'),
       "?", "?"},
      {"100,000 processing instructions", repeated("<?p ?>", 100000) + sWhole, "", ""},
      {"20,000 names",
       sOpen + sInside + numbered(20000, [](const std::string &s) { return "<n" + s + "/>"; }) + sClose, "",
       ""},
      {"20,000 names and an instruction",
       sOpen + sInside + numbered(20000, [](const std::string &s) { return "<n" + s + "/>"; }) + sClose +
           "<?p ?>",
       "", ""},
      {"zero bytes", std::string(1000000, '\0'), "?", "?"},
      {"zero byte inside", sOpen + std::string(1, '\0') + sInside + sClose, "?", "?"},
      {"zero byte behind", sWhole + std::string(1, '\0'), "?", "?"},
      {"nothing", "", "?", "?"},
      {"blanks", std::string(3000000, ' '), "?", "?"},
  };
}

}  // namespace hostile
