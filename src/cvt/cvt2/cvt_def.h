/* cvt_def.h: what every header of the library shares, and the two loading functions through which a
 * configuration section reads its files.
 *
 * Record layout. Records of the configuration and of messages live in the memory pool (cvt_memory.h), which
 * packs bytes without alignment: a record may lie at an odd address. CVT_RECORD tells the compiler so, and
 * every member is then read and written safely wherever the record lies. Offsets and sizes are those that the
 * plain C record would have: where that leaves a gap, the gap is written out as caGap.
 */
#ifndef CVT_DEF_H
#define CVT_DEF_H

#define CVT_RECORD __attribute__((packed))

/* What stands between these two is C and exported, also where the rest of a program is hidden by default. */
#ifdef __cplusplus
#define CVT_C_BEGIN _Pragma("GCC visibility push(default)") extern "C" {
#define CVT_C_END \
  }               \
  _Pragma("GCC visibility pop")
#else
#define CVT_C_BEGIN _Pragma("GCC visibility push(default)")
#define CVT_C_END _Pragma("GCC visibility pop")
#endif

CVT_C_BEGIN

/* A file initialiser: takes the full file name and loads that file.
 * Returns 0 when the file was loaded, 1 when there was nothing to do, any other value on failure. The name
 * belongs to the caller, is writable, and is valid during the call only. */
typedef int fnptr(char *psFileName);

/* Hands every XML file of a directory to Init, in the order in which the directory delivers them.
 *   psBasePath  directory that holds psDirName; null: the configuration root
 *   psDirName   directory below it
 *   Init        called once a file; must not be null
 * An entry is taken when the three bytes behind the last "." of its name are "xml". Files are loaded from the
 * configuration root also when psBasePath names another directory.
 * Returns 0 (also when the directory does not exist), or -1 on a null argument or at the first failing file.
 * Defined by the start-up unit; declared here because the sections below it load their files through it. */
int cvtIniParseDirXml(char *psBasePath, char *psDirName, fnptr *Init);

/* Hands one file, psBasePath/psDir/psFileName, to Init.
 *   psBasePath  null: the configuration root
 * Returns 0 when Init returned 0 or 1; -1 on a null argument or when Init failed. */
int cvtIniParseFileXml(char *psBasePath, char *psDir, char *psFileName, fnptr *Init);

CVT_C_END

#endif
