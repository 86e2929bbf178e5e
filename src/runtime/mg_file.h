// The runtime class: files, paths, text, numbers, dates, processes, reports and the log. A cheap object with empty
// defaults: whoever needs a file operation makes one for the length of a call; only LogFileGlobal (app/log.h) lives as
// long as the process. Operations that keep no state are static. MGSocket derives from it; nothing is virtual.
// Failures are MGErr. Names are byte strings as the system takes them, text is UTF-8; a const char* argument is never
// null unless its operation says so; an argument taken by value may be an element of a result. The sections bear the
// names of the source files that hold them.
//
// Threads: any may call what is static, and two objects know nothing of each other. Of one object several threads may
// at once write to the logs and the result file, ask for repeated errors and exchange signals, with settings and names
// made before they start; all else of it, as the file that is read in pieces, the directory and the library, belongs to
// one thread at a time. Waiting for a program and starting one without waiting get along, though the signal SIGCHLD is
// the whole process's.
#pragma once

#include "../app/mg_err.h"
#include "listed_files.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <dirent.h>
#include <mutex>
#include <string>
#include <vector>

class MGInfo;

class MGFile {
public:
    MGFile() = default;
    // Closes the directory stream and the library; a file opened with OpenFileBuf stays open.
    ~MGFile();
    MGFile(const MGFile&) = delete;
    MGFile& operator=(const MGFile&) = delete;

    void* m_lib = nullptr;         // the loaded shared library
    DIR* m_dir = nullptr;          // the directory being read
    dirent* m_dir_entry = nullptr; // its entry last read; belongs to the stream

    // Logs: a name may be empty, which is "no such log". Each mutex is held only while its file is written or renamed.
    std::string m_log_file;
    std::mutex m_log_mutex;
    bool m_protect_repeat = false; // repeated errors are left out
    bool m_log_input_off = false;
    std::string m_log_file_input;
    std::mutex m_log_input_mutex;
    bool m_log_output_off = false;
    std::string m_log_file_output;
    std::mutex m_log_output_mutex;
    int32_t m_log_max_size = 0; // KiB; below 1 no log is rotated
    std::string m_prog_version; // opens a rotated log, if not empty
    std::string m_debug_log_file;
    std::mutex m_debug_log_mutex;
    std::string m_debug_log_file_input;
    std::mutex m_debug_log_input_mutex;
    std::string m_debug_log_file_output;
    std::mutex m_debug_log_output_mutex;
    bool m_debug_log = false;
    bool m_ext_debug_log = false; // counts only while m_debug_log is on
    std::string m_profile_id;     // named in each entry, if not empty
    bool m_syslog = false;        // errors also go to the system log

    // The result file of a report.
    std::string m_result_dir; // ends in "/" once it is set
    std::string m_result_file;
    std::mutex m_result_mutex;
    std::string m_result_file_name;

    // Signal files and the pid file.
    std::string m_input_signal_file;
    std::mutex m_input_signal_mutex;
    std::string m_output_signal_file;
    std::mutex m_output_signal_mutex;
    std::string m_pid_file;

    // The file that is read in pieces.
    int32_t m_file_handle = -1;
    std::string m_file_name;

    // Repeat suppression: the errors seen since m_repeat_begin (seconds; 0 until the first error).
    std::mutex m_repeat_mutex;
    std::vector<MGErr> m_repeat_errors;
    time_t m_repeat_begin = 0;

    // --- core_files: whole files and directories. One system call a step, none is repeated after EINTR. What is read
    //     whole, here and below, must be a regular file or a link to one; anything else is refused at once. What is
    //     written counts only once it is closed. Where a wrong "no such file" would let something be overwritten, left
    //     out or left behind, a name that can't be examined is an error. ---

    // Whether the name exists and is no directory (IsFile), or is one (IsDir). Follows links. A null or blank name and
    // whatever can't be examined give false; nothing is thrown.
    static bool IsFile(const char* name);
    static bool IsDir(const char* name);
    // Size in bytes, 0 when the file can't be examined. Throws nothing.
    static int64_t SizeFile(const char* name);
    // Makes one directory, mode 0775 less the umask. A name that exists already is success, whatever it is.
    static void MakeDir(const char* path);
    // Makes the path with all its missing parents.
    static void IfNotExistMakeDirRecursive(const std::string& path);
    // Stores the variable's value, which may be empty; throws if it isn't set.
    static void GetEnv(const char* name, std::string& value);
    // The whole file in a buffer of the C heap, followed by one zero byte that *size doesn't count. The caller owns
    // the buffer and releases it with Free.
    static uint8_t* ReadFile(const char* file, size_t* size);
    // free(); null is allowed.
    static void Free(void* data);
    // Copies size bytes, first to last.
    static void Copy(void* to, const void* from, size_t size);
    // The whole file; zero bytes stay in data. ReadFileVector empties data first, so a failure leaves it empty.
    static void ReadFileString(const std::string& file, std::string& data);
    static void ReadFileVector(const std::string& file, std::vector<uint8_t>& data);
    // Creates or truncates the file (mode 0664 less the umask) and writes data with one write. 2 GiB, here and in what
    // reads or adds whole files, are more than one call moves: refused with the file untouched.
    static void WriteFile(const char* file, const uint8_t* data, size_t size);
    // Opens or creates the file and writes data at its end with one write. Seek and write are two steps: writers of
    // one file need a lock of their own.
    static void AddFile(const char* file, const uint8_t* data, size_t size);
    // ReadFile, then WriteFile: the copy does not take over the mode of the source.
    static void CopyFile(const char* from, const char* to);
    static void CopyFile(const std::string& from, const std::string& to);
    // unlink
    static void RemoveFile(const char* file);
    // rename
    static void RenameFile(const char* from, const char* to);
    // Appends "/" unless dir ends in one; an empty dir becomes "/".
    static void DirAddSlash(std::string& dir);
    // dir, "/" as DirAddSlash decides, name.
    static std::string JoinDirAndFileName(const std::string& dir, const char* name);

    // --- paths: file names taken apart and put together. Text only, "/" is the one separator. ---

    // What lies before the last "/", without it; empty without a "/".
    static std::string GetDirFromFile(const std::string& file);
    // What lies behind the last "/"; empty without a "/": a bare name has no name part here.
    static std::string GetNameFromFile(const std::string& file);
    // Splits before the last "."; without one ext is empty. Doesn't look for "/".
    static void SplitFileNameToNameAndExt(std::string file, std::string& name, std::string& ext);
    // dir, "/" as DirAddSlash decides, name, ext.
    static std::string JoinDirAndFileNameExt(const std::string& dir, const char* name, const char* ext);
    // Removes one trailing "/", but never the only character.
    static void DirDelSlash(std::string& dir);
    // Whether file ends in ext; unless case_sensitive, without regard to case.
    static bool IsFileExt(const std::string& file, const std::string& ext, bool case_sensitive);
    // RemoveFile, if IsFile; throws where that can't be told.
    static void IfIsFileDelIt(const std::string& file);
    // "name<num>ext" and "name~<num>ext".
    static std::string ReceiptFileName(const char* name, unsigned num, const char* ext);
    static std::string GetNameNExt(const char* name, unsigned num, const char* ext);
    // The number between a prefix and an extension, which are cut by their lengths, not compared; 0 if there is none.
    static uint32_t GetNumberFromFileNameExt(const std::string& file, const std::string& prefix,
                                             const std::string& ext);
    // The same for a member of the family "stem~<num>ext".
    static uint32_t GetNumberFromFileName(const std::string& file, const std::string& stem, const std::string& ext);
    // The decimal number at the start of text; 0 if there is none or it is out of range. Throws nothing.
    static uint32_t StrToUint32(const std::string& text);
    // Removes mask from the start of text and gives true; false if text doesn't begin with it. No wildcards.
    static bool DelBeginMaskFromLeftStr(std::string mask, std::string& text);
    static bool DelBeginMaskFromLeftStr(const char* mask, std::string& text);
    // Replaces by "_" what no file name should hold: control characters and "%'*/:<>?\|. Ends at an invalid sequence.
    static void ReplaceFileNameIllegalSimbos(std::string& name);
    // Cuts name to at most n bytes, at a character's boundary.
    static void CutFileNameUpToNChars(std::string& name, size_t n);
    // Whether a file can be written, read and removed in dir. Throws nothing.
    static bool TestDirOnReadAndWriteAccess(const std::string& dir);
    // Whether the file can be renamed to its name with ".tmp" added, and back; not if that name is taken. Throws
    // nothing; a file that can't be renamed back is named in the log of the process.
    static bool IsRenamedFile(const std::string& file);

    // --- utf8: the walk over characters, and case. The walk ends at a zero byte and at anything that is no character
    //     of one to four bytes; overlong forms and surrogates are not refused. Case is known of Latin and Russian. ---

    // Looks at the character at pos + len. If it is valid, stores its position and its length and gives true;
    // otherwise leaves both alone. Start with 0 and 0.
    static bool NextUtf8(const std::string& text, size_t& pos, size_t& len);
    // The number of characters up to where the walk ends.
    static size_t NumberUtf8(const std::string& text);
    // Whether the walk covers all bytes.
    static bool IsUtf8String(const std::string& text);
    // Removes the first n characters.
    static void ShiftBeginUtf8(std::string& text, size_t n);
    // Removes the last n characters, or all.
    static void CuttingEndUtf8(std::string& text, size_t n);
    // Keeps the first n characters.
    static void CuttingEndIfMoreUtf8(std::string& text, size_t n);
    // The text in one case, of the same length in bytes; from an invalid sequence on it is unchanged.
    static std::string UpperUtf8(const std::string& text);
    static std::string LowerUtf8(const std::string& text);
    // Equality; unless case_sensitive, without regard to case.
    static bool CompareUtf8(const std::string& a, const std::string& b, bool case_sensitive);

    // --- masks: "*" is any run of characters, "?" any one character; neither can be escaped. ---

    // Compares mask, in which only "?" is special, with the characters of text from the one at pos, len on. True when
    // the mask is used up; matched grows by the bytes of text used.
    static bool CompareMaskWithQuestion(const std::string& text, size_t pos, size_t len, const std::string& mask,
                                        size_t& matched);
    // The leftmost place where CompareMaskWithQuestion holds: its byte position and the bytes matched.
    static bool FindMaskWithQuestion(const std::string& text, const std::string& mask, size_t& pos, size_t& matched);
    // Whether the last characters of text match mask; false if either is empty or the mask is the longer.
    static bool MatchMaskWithEndStr(const std::string& text, const std::string& mask);
    // Whether mask holds "*" only, and at least one.
    static bool IsOnlyAsterisk(const std::string& mask);
    // Whether text as a whole matches mask; unless case_sensitive, without regard to case. An invalid sequence cuts
    // the mask.
    static bool CompareMaskUtf8(const std::string& text, const std::string& mask, bool case_sensitive);

    // --- text_helpers: trimming, splitting and searching. Bytes; blank are " ", "\t", "\n" and "\r" only. ---

    // Remove blank characters at the start, at the end, or at both.
    static void TrancatedLeft(std::string& text);
    static void TrancatedRight(std::string& text);
    static void TrancatedAll(std::string& text);
    // The pieces of text between occurrences of sep, left to right; pieces may be empty. None for an empty text or a
    // null or empty sep.
    static void SplitStringLeft(std::string text, const char* sep, std::vector<std::string>& parts);
    // The same from the right, last piece first; a sep at the very start gives no empty piece.
    static void SplitStringRight(std::string text, const char* sep, std::vector<std::string>& parts);
    // The same on the text in lower case.
    static void SplitLowerStringLeft(const std::string& text, const char* sep, std::vector<std::string>& parts);
    static void SplitLowerStringRight(const std::string& text, const char* sep, std::vector<std::string>& parts);
    // Whether text is null, empty or blank.
    static bool IsEmptyString(const char* text);
    static bool StringIsEmpty(const std::string& text);
    // Whether no byte has its top bit set; null has none.
    static bool IsAnsiString(const char* text);
    // text without any byte equal to c.
    static std::string DelAllSimbolsFromString(std::string text, char c);
    // text in pieces of n bytes (n above 0) with sep between two pieces.
    static std::string InsertSepToString(const std::string& text, const char* sep, size_t n);
    // Replaces the first src by dst; false if there is none.
    static bool StrReplaceSrcOnDstLeft(std::string& text, std::string src, std::string dst);
    // Cuts at the first sep, both sides trimmed. False, with both empty, if there is none.
    static bool SplitSubStringLeft(std::string text, std::string sep, std::string& left, std::string& right);
    // The line that begins at pos, without its line feed and a carriage return before that; pos moves behind it.
    // False, with line empty, at the end.
    static bool FindNextLine(const std::string& text, size_t& pos, std::string& line);
    // The lines of text, trimmed; what stands behind the last line feed is dropped. With stop_on_blank the first blank
    // line ends the walk.
    static void SplitBlockOnSubStrings(std::string text, std::vector<std::string>& lines, bool stop_on_blank);
    // Cuts off text the block that begins with the last sep. Its first line, trimmed, goes to header, what follows to
    // block. False if there is no sep.
    static bool GetInfoBlockFromEnd(std::string& text, std::string sep, std::string& header, std::string& block);
    // The next piece from pos on that stands between begin and end on one line; pos moves behind end. With escape, a
    // begin or an end behind a backslash doesn't count.
    static bool FindSubString(const std::string& text, size_t& pos, std::string begin, std::string end,
                              std::string& out, bool escape);

    // --- numbers: from text and to text. ---

    // The decimal number at the start of text, white space and sign allowed, what follows ignored. Null and blank give
    // 0; no digits or a number out of range throws.
    static int32_t StringToInt32(const char* text);
    static int64_t StringToInt64(const char* text);
    // The number before the first sep, both of which are removed from text. Throws if there is no sep.
    static int32_t GetNextInt32(std::string& text, const char* sep);
    static std::string Uint32toString(uint32_t number);
    static std::string Int64toString(int64_t number);
    static std::string Int32toString(int32_t number);
    static std::string Int16toString(int16_t number);
    // The number through a printf format for one unsigned; at most 127 bytes.
    static std::string GetUint32Format(uint32_t number, const char* format);

    // --- dates: local time, by localtime_r. Times are seconds since 1970. ---

    // The moment through a printf format for six int: year, month, day, hour, minute, second. Empty for t = 0.
    static std::string GetDateAndTimeFormat(time_t t, const char* format);
    // "2024-12-31 23:59:59", the text form. Empty for t = 0.
    static std::string GetDateAndTime(time_t t);
    // "_20241231_235959", for file names. Empty for t = 0.
    static std::string GetDateAndTimeForFile(time_t t);
    // The text form of the present time.
    static std::string GetLocalDateAndTime();
    // The text form back; 0 for an empty text. -1 for what mktime refuses.
    static time_t StringToTime(std::string text);
    // Month from 1, year in full.
    static void GetDateFromTime(time_t t, unsigned& year, unsigned& month, unsigned& day, unsigned& hour,
                                unsigned& minute, unsigned& second);
    static unsigned GetCurrentYear();
    // The same as text, four digits the year and two each of the others.
    static void GetDateFromTimeStr(time_t t, std::string& year, std::string& month, std::string& day, std::string& hour,
                                   std::string& minute, std::string& second);
    // The present date; time is hour, minute and second without separators.
    static void GetCurrentDateTimeStr(std::string& year, std::string& month, std::string& day, std::string& time);
    // Appends "2024/12/31/235959_0000002a" to dir, the last part being num.
    static void DirAddArchiveDateExtTime(time_t t, std::string& dir, unsigned num);
    // The same with the present time; DirAddArchiveDate adds a slash first.
    static void DirAddArchiveDateExt(std::string& dir, unsigned num);
    static void DirAddArchiveDate(std::string& dir, unsigned num);
    // Appends a slash and the present year, month and day, each if its flag is set.
    static void AddYearMonDayToDir(std::string& dir, bool year, bool month, bool day);

    // --- encodings: CRC-32 (IEEE 802.3), base64, hexadecimal. ---

    // A null has no bytes.
    static uint32_t MakeCrc32(const uint8_t* data, size_t size);
    static uint32_t MakeCrc32(const std::string& text);
    static uint32_t MakeCrc32Ext(const std::string& text);
    static uint32_t MakeCrc32Ext(const std::vector<uint8_t>& data);
    // The CRC of the text in lower case: a key that is blind to case.
    static uint32_t MakeCrc32Lower(const std::string& text);
    // Standard alphabet, padded, no line breaks.
    static void DataToBase64(const std::vector<uint8_t>& data, std::string& text);
    // Reads up to the end, the first zero byte or the first "="; skips what is outside the alphabet.
    static void Base64ToData(const std::string& text, std::vector<uint8_t>& data);
    // Lower-case hexadecimal, two digits a byte.
    static void BinToHex(const std::vector<uint8_t>& data, std::string& text);
    // The reverse, either case. Throws on an odd length or another character; data is empty then.
    static void String2Binary(const std::string& text, std::vector<uint8_t>& data);
    static bool CompareBinary(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b);
    // Whether data are valid UTF-8 with one zero byte, at the end; text is then what stands before it, else empty.
    static bool GetUtf8StringFromBinary(const std::vector<uint8_t>& data, std::string& text);
    // The same, but throws where that gives false.
    static void GetUtf8StringFromBinaryExt(const std::vector<uint8_t>& data, std::string& text);
    // The bytes of text and a zero byte.
    static void ConvertStringWithNullToBinary(const std::string& text, std::vector<uint8_t>& data);

    // --- process: the guard against a second run, pid and signal files, programs, the shared library. ---

    // Takes the guard `name` (an abstract socket, first 106 bytes count) or throws if it is held. It is kept until the
    // process ends, or with release given back at once.
    static void ProtectionReloading(const std::string& name, bool release);
    // ProtectionReloading for good.
    static void Reloading(const std::string& name);
    // Whether some process holds the guard.
    static bool IsRunProgram(const std::string& name);
    // Null leaves the name as it is.
    void SetPidFile(const char* file);
    // Writes the process id and a line feed.
    void WritePid();
    // Removes the pid file, if a name is set and the file exists.
    void DeletePid();
    // Null leaves a name as it is.
    void SetSignalFile(const char* input, const char* output);
    std::string GetInputSignalFile() const;
    std::string GetOutputSignalFile() const;
    // Replaces the output signal file. False, doing nothing, if it has no name or text is empty.
    bool WriteSignal(const std::string& text);
    // Takes the input signal, trimmed and in upper case; with keep the file stays. False if there is none.
    bool ReadSignal(std::string& text, bool keep);
    bool ReadSignal(std::string& text);
    // Runs command through the shell and gives its exit code, 0 to 254. With hide it shows in no error.
    static int RunExtenProgAndWaitExitCode(const std::string& command, bool hide);
    // Starts program with the arguments in params, joined by "<|>". A program that can't be started isn't reported.
    static void RunExtenProgNoWait(const std::string& program, const std::string& params);
    // 0 or 1 if the file begins with that digit, else -1.
    static int GetNumProc(const std::string& file);
    // Loads a shared library in place of the one that is loaded; GetLibFunc gives the address of a function in it.
    void LoadLib(const char* file);
    void* GetLibFunc(const char* name);
    void UnloadLib();

    // --- result_file: the file that list reports go to. ---

    // Stores dir, ending in a slash.
    void SetResultDir(const char* dir);
    // The result file is `name` in the result directory, if that is set.
    void SetResultFile(const char* name);
    // The result file is name and ext, with the present moment between them if with_date; gives that moment as text.
    std::string SetResultFileDate(const char* name, bool with_date, const char* ext);
    std::string GetResultFile() const;
    std::string GetResultFileName() const;
    std::string GetResultFileDir() const;
    // Adds the report to the result file, under m_result_mutex; with new_file a file of that name goes first.
    void PrintInfoInResultFile(const MGInfo& info, bool new_file);

    // --- listing: directories, families of numbered names, files in pieces. ---

    // One directory at a time. ReadDir gives the next name, which belongs to the stream until the next call, or null at
    // the end.
    void OpenDir(const char* dir);
    void CloseDir();
    const char* ReadDir();
    // One regular file at a time, in pieces. OpenFileBuf closes what is open.
    void OpenFileBuf(std::string file);
    // Up to size bytes; 0 at the end.
    size_t ReadFileBufEx(uint8_t* buf, size_t size);
    // Exactly size bytes, or throws with data empty.
    void ReadFileBuf(size_t size, std::vector<uint8_t>& data);
    void CloseFileBuf();
    // The whole file by pieces, without asking for its size; as text it must be UTF-8 that ends in a zero byte.
    void ReadFileVectorEx(std::string file, size_t piece, std::vector<uint8_t>& data);
    void ReadFileStringEx(std::string file, size_t piece, std::string& text);
    // The files of dir, no directories nor links that lead nowhere, whose bare name matches mask, in the directory's
    // order. With full the names are whole paths.
    void GetListFilesFromDirExt2(std::string dir, std::string mask, bool case_sensitive,
                                 std::vector<MGFileAndSize>& list, bool full);
    void GetListFilesFromDirExt(std::string dir, std::string mask, bool case_sensitive, std::vector<std::string>& list,
                                bool full);
    void GetListFilesFromDir(std::string dir, std::string mask, bool case_sensitive, std::vector<std::string>& list);
    void GetListFullFilesFromDir(std::string dir, std::string mask, bool case_sensitive,
                                 std::vector<std::string>& list);
    // The names of the files whose size stays the same over the wait.
    void GetListFilesFromDirTimeout(std::string dir, std::string mask, bool case_sensitive,
                                    std::vector<std::string>& list, unsigned seconds, unsigned milliseconds);
    // The family of a name: the plain file, then its numbered copies, highest number first.
    void GetListFilesFromDir(std::string dir, std::string stem, std::string ext, std::vector<std::string>& list);
    // The same: without it a literal would pass for the flag of the listing by mask.
    void GetListFilesFromDir(std::string dir, std::string stem, const char* ext, std::vector<std::string>& list);
    // The highest number of the family, 0 if none, and that file's bare name.
    uint32_t GetMaxNameNExtFromDir(std::string dir, std::string stem, std::string ext, std::string& name);
    static void CopyListFileToListNumFile(const std::vector<std::string>& files, std::string stem, std::string ext,
                                          std::vector<MGFileNumExt>& list);
    static uint32_t GetMaxNumFromListNumFile(const std::vector<MGFileNumExt>& list);
    // Remove from a list of bare names: those that end in ext; those without a file of that name and ext; those that
    // can't be renamed; those of size 0.
    static void DelListFilesExt(std::vector<std::string>& list, const char* ext, bool case_sensitive);
    static void DelWithoutDetachedSign(std::vector<std::string>& list, const char* ext, const std::string& dir);
    static void DelNotRenamedFiles(const std::string& dir, std::vector<std::string>& list);
    static void DelNullSizeFilesFromList(const std::string& dir, std::vector<std::string>& list);
    // Remove the files themselves; the first failure ends the work. Directories stay.
    static void DelFilesFromDir(const std::string& dir, const std::vector<std::string>& list);
    static void DelFilesFromDirExt(const std::string& dir, const std::vector<MGFileNumExt>& list);
    void DelAllFilesFromDir(const std::string& dir);
    // Waits. Of the milliseconds 1000 at most count.
    static void SleepTimeout(unsigned seconds, unsigned milliseconds);
    // Whether the size is the same before and after the wait.
    static bool IsFileCopiedForEnd(const std::string& file, unsigned seconds, unsigned milliseconds);

    // --- delivery: copying and moving, and what becomes of a name that is taken ("ADD_NUM", "REPLACE", "ERROR"). ---

    // Copies in pieces of at most 512 MiB. With test_size a source that hasn't `size` bytes is refused, and the target
    // removed. Any other failure leaves a partial target.
    static void CopyLongFile(const char* from, const char* to, bool test_size, size_t size);
    static void CopyLongFile(const std::string& from, const std::string& to);
    // Copy, then remove the source once the copy is safely closed: works across file systems.
    static void MoveFile(const char* from, const char* to);
    static void MoveFile(const std::string& from, const std::string& to);
    static void MoveLongFile(const std::string& from, const std::string& to);
    // rmdir
    static void RemoveDir(const char* dir);
    // Writes data to file, or to what mode_same makes of a name that is taken; gives the path written. With date_dirs
    // into directories of the present year, month and day. A failure leaves no partial file.
    std::string WriteSameFile(const std::string& file, const uint8_t* data, size_t size, const std::string& mode_same,
                              bool date_dirs);
    // Copies name from one directory to another; result is the name it got. With rotate and copies above 0 the target
    // moves to the next number and at most `copies` numbered files stay; otherwise mode_same decides. With with_sign
    // the detached signature goes along. What can be known (source and signature can be read, the target is not the
    // source, in a rotation the size) is tested before anything is renamed, and a failure leaves no partial target.
    void CopySameFile(std::string from_dir, std::string to_dir, std::string name, std::string& result,
                      std::string mode_same, bool with_sign, bool test_size, size_t size, bool date_dirs, bool rotate,
                      int copies);

    // --- log (src/app): settings, entries and errors. The log never fails its caller. ---

    void SetLogFile(const char* name);
    void SetLogFileInput(const char* name);
    void SetLogFileOutput(const char* name);
    void SetDebugLogFile(const char* name);
    void SetDebugLogFileInput(const char* name);
    void SetDebugLogFileOutput(const char* name);
    // KiB, for all six logs; below 1 none is rotated.
    void SetLogMaxSize(int size);
    void SetProgVersion(const std::string& version);
    void SetProtectRepeat(bool protect);
    void TurnOffLogFileInput(bool off);
    void TurnOffLogFileOutput(bool off);
    void SetProfileId(const std::string& id);
    void ClearProfileId();
    // Errors go to the system log too. It keeps the pointer: ident must live until SyslogTurnOff.
    void SyslogTurnOn(const char* ident);
    void SyslogTurnOff();
    void SetDebugLog(bool debug, bool extended);
    bool GetDebugLog() const;
    // Whether both kinds of debug logging are on.
    bool GetExtDebugLog() const;
    // Writes an error to the main log, rotated first if due. A repeated error and a debug error may be left out.
    void PrintErrInLogFile(MGErr& err);
    // Adds one entry to log_file under m. A null marker leaves the header line out, with_date its date.
    void PrintLogFile(std::mutex& m, const std::string& log_file, const char* marker, bool with_date,
                      const std::string& text);

    // --- log_rotation (src/app): rotation, repeat suppression, info and debug entries. ---

    // Adds an info entry to a log; nothing while that log is turned off.
    void PrintInfoInLogFile(const MGInfo& info);
    void PrintInfoInLogFileInput(const MGInfo& info);
    void PrintInfoInLogFileOutput(const MGInfo& info);
    // Adds a debug entry, if debug logging is on (with extended, that too) and the log has a name.
    void PrintDebugLogFile(const MGInfo& info, bool extended);
    void PrintDebugLogFileInput(const MGInfo& info, bool extended);
    void PrintDebugLogFileOutput(const MGInfo& info, bool extended);
    // Renames a log that has outgrown m_log_max_size to the next free number, and opens the new one with the program's
    // version. Throws MGErr if the rename fails.
    void RenameLogFileIfMaxSize(std::mutex& m, const std::string& log_file);
    // Fills the CRC fields of err; true when it was seen three times already within the present hour.
    bool IsRepeatError(MGErr& err);
    // "stem~<num>.ext" of a bare name.
    static std::string SameFileName(const std::string& name, unsigned num);
    // SameFileName with the number that is next to use in dir; throws if none is free.
    static std::string MaxSameFileName(const std::string& dir, const std::string& name);
};

// The guard without an MGFile; is_run_program asks for the service of a profile.
void protection_reloading(const std::string& name, bool release);
bool is_run_program(const std::string& profile_id);
