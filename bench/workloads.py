"""The bench's workloads: what is converted into what, by whom, and what the library must reach."""
import dataclasses

OURS, RIVAL, FLOOR, COPY = "library", "rival", "floor", "copy"


@dataclasses.dataclass(frozen=True)
class Contestant:
    """A program that reads {input} and writes {output}, or its standard output.

    goal: of a rival, how many times faster the library must be; of a floor, how many times its time it may take.
    needs: a file or program without which it cannot run.
    """
    name: str
    role: str
    command: str
    needs: str
    goal: float | None = None
    stdout: bool = False


@dataclasses.dataclass(frozen=True)
class Workload:
    """expected: a file of the data, or the contestant whose output is what the others must write."""
    name: str
    title: str
    input: str
    expected: str
    compare: str
    contestants: tuple


def ours(message, target, frame, growth, root="{bench}/cvt2", pipeline="in"):
    return Contestant("cvt2", OURS, f"{{bin}}/bench_cvt2 {{input}} {{output}} {root} {message} {pipeline} {target} {frame} "
                      f"{growth}", "{bin}/bench_cvt2")


def built(name, program, role, goal, more=""):
    return Contestant(name, role, f"{{bin}}/bench_{program} {{input}} {{output}} {more}".rstrip(), f"{{bin}}/bench_{program}",
                      goal)


def hand(program, goal=None, more=""):
    return built("hand-written C++", program, FLOOR, goal, more)


def script(name, command, goal=None, stdout=False):
    """`command` begins with the interpreter."""
    return Contestant(name, RIVAL, command, command.split()[0], goal, stdout)


def python(file, goal=None, more=""):
    return script("Python", f"python3 {{bench}}/contestants/{file} {{input}} {{output}} {more}".rstrip(), goal)


def java(name, factory, stylesheet, jar, goal):
    return Contestant(name, RIVAL, f"java -cp {{work}}/java:{jar} Transform {factory} {{bench}}/contestants/{stylesheet} "
                      "{input} {output}", jar if jar else "{work}/java/Transform.class", goal)


COPIED = Contestant("copy only", COPY, "{bin}/bench_copy {input} {output}", "{bin}/bench_copy")
SAXON = "/usr/share/java/Saxon-HE.jar"

WORKLOADS = [
    Workload("w1-xml", "fixed-length order to XML", "w1.dat", "w2.xml", "bytes", (
        ours("OrderRecord", "xml", "lines-lf", 3),
        script("mawk", "mawk -f {bench}/contestants/w1_xml.awk {input}", 10, stdout=True),
        python("w1_xml.py", 15),
        hand("w1_xml", 2.5),
        COPIED)),
    Workload("w1-json", "fixed-length order to JSON", "w1.dat", "w4.jsonl", "bytes", (
        ours("OrderRecord", "json", "lines-lf", 3),
        python("w1_json.py", 19),
        hand("w1_json", 2.5),
        COPIED)),
    Workload("w1-fixed", "fixed-length order to another fixed-length layout, packed and edited", "w1.dat", "GnuCOBOL",
             "bytes", (
                 ours("OrderRecord", "packed", "lines-lf", 2),
                 Contestant("GnuCOBOL", RIVAL, "env COB_VARSEQ_FORMAT=3 {work}/w1_fixed {input} {output}",
                            "{work}/w1_fixed", 4),
                 hand("w1_fixed", 3),
                 COPIED)),
    Workload("w2-fixed", "XML order to fixed-length", "w2.xml", "w1.dat", "bytes", (
        ours("OrderDocument", "record", "lines", 2),
        built("libxslt", "w2_libxslt", RIVAL, 18, "{bench}/contestants/w2_fixed.xsl"),
        java("JDK XSLTC", "jdk", "w2_fixed.xsl", "", 7),
        built("pugixml", "w2_fixed_pugixml", FLOOR, 1.25),
        COPIED)),
    Workload("w2-xml", "XML order to another XML", "w2.xml", "libxslt", "xml", (
        ours("OrderDocument", "purchase", "lines", 3),
        built("libxslt", "w2_libxslt", RIVAL, 12, "{bench}/contestants/w2_xml.xsl"),
        java("Saxon", "net.sf.saxon.TransformerFactoryImpl", "w2_xml.xsl", SAXON, 5),
        built("pugixml", "w2_xml_pugixml", FLOOR, 1.3),
        COPIED)),
    Workload("w3-json", "CSV of 20 columns to JSON", "w3.csv", "Python", "json", (
        ours("TableRow", "table", "rows", 5),
        script("Miller", "mlr --icsv --ojsonl -S cat {input}", 8, stdout=True),
        python("w3_json.py", 8),
        hand("w3_json", 2.5),
        COPIED)),
    Workload("w4-json", "JSON to JSON, renamed, with a nested loop", "w4.jsonl", "jq", "json", (
        ours("OrderObject", "mapped", "lines", 3),
        script("jq", "jq -c -f {bench}/contestants/w4.jq {input}", 33, stdout=True),
        script("Node", "node {bench}/contestants/w4.js {input} {output}", 4),
        built("RapidJSON", "w4_rapidjson", RIVAL, 2),
        built("simdjson", "w4_simdjson", FLOOR, 1.9),
        COPIED)),
    Workload("w6", "ISO 8583 decoded and encoded", "w6.iso", "w6.iso", "bytes", (
        ours("CardRequest", "in", "length2", 1),
        Contestant("npm iso_8583", RIVAL,
                   "env NODE_PATH={work}/npm/node_modules node {bench}/contestants/w6.js {input} {output}",
                   "{work}/npm/node_modules/iso_8583", 80),
        hand("w6", 3.2),
        COPIED)),
    Workload("w7-gb", "Chinese text, UTF-8 to GB18030", "w7.utf8", "w7.gb", "bytes", (
        ours("ChineseUtf8", "gb18030", "lines-lf", 2),
        python("w7.py", more="UTF-8 GB18030"),
        hand("w7", more="UTF-8 GB18030"),
        COPIED)),
    Workload("w7-utf8", "Chinese text, GB18030 to UTF-8", "w7.gb", "w7.utf8", "bytes", (
        ours("ChineseGb18030", "utf8", "lines-lf", 2),
        python("w7.py", more="GB18030 UTF-8"),
        hand("w7", more="GB18030 UTF-8"),
        COPIED)),
    Workload("w8-xml", "NACHA file to XML; a message is an entry", "w8.ach", "Python", "bytes", (
        ours("NachaFile", "pain", "whole", 8, root="{bench}/nacha", pipeline="nacha"),
        python("w8_xml.py"),
        hand("w8_xml"),
        COPIED)),
]

MISSING = {"w5": "tag=value messages: waits for its plug-in"}


def messages(workload, count):
    """How many messages a workload has of that many of the data; see data.py."""
    return max(1, count * 3 // 5) if workload.name.startswith("w7") else count
