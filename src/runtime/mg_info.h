// A report of rows of name and value: info and debug entries of the log, list reports and tickets are built with it.
// A caller fills it once and takes its text once; where the text goes is the business of MGFile. Used by one thread.
// Throws nothing of its own: a failure of memory passes through as the standard exception.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// One row. Both texts are UTF-8; a tab at the start of the name indents the row.
class MGLine {
public:
    std::string name;
    std::string value; // "____EMPTY____": the row is a heading, which prints as its name alone
};

class MGInfo {
public:
    // The value that makes a row a heading.
    static constexpr const char* empty_value = "____EMPTY____";

    // The report's text: one line a row, "name: value" or the heading's name. Empty without rows.
    std::string GetString() const;

    // Removes all rows; the type stays.
    void Clear() { m_lines.clear(); }

    // A number that is free for the caller; no text depends on it.
    void SetType(int64_t type) { m_type = type; }
    int64_t GetType() const { return m_type; }

    // Append one row. Flags read "true" and "false", numbers are decimal, bytes are a dump: "(17) [01 02 … 11]" with
    // the first and the last eight bytes where there are more than 16.
    void AddRow(const char* name, const char* value);
    void AddRow(const char* name, const std::string& value);
    void AddRow(const char* name, bool value);
    void AddRow(const char* name, int value);
    void AddRow(const char* name, long value);
    void AddRow(const char* name, unsigned value);
    void AddRow(const char* name, unsigned long value);
    void AddRow(const char* name, const std::vector<uint8_t>& value);

    // Append a row whose name is the prefix (may be null), num, one blank and name.
    void AddNumRow(const char* prefix, unsigned num, const char* name, const char* value);
    void AddNumRow(const char* prefix, unsigned num, const char* name, const std::string& value);
    void AddNumRow(unsigned num, const char* name, const char* value);
    void AddNumRow(unsigned num, const char* name, const std::string& value);

    // Make s end in a line feed, an empty s too; take one line feed off its end if there is one.
    static void AddSlashN(std::string& s);
    static void DelSlashN(std::string& s);

    static std::string Uint32String(unsigned number);      // "%u"
    static std::string Uint32StringExt(unsigned number);   // "%u (0x%08X)"
    static std::string Uint8StringExt(uint8_t number);     // "%02X"
    static std::string Uint64String(unsigned long number); // "%lu"
    static std::string Int64String(long number);           // "%ld"
    static std::string Int2String(int number);             // "%d"

    // Local time as "2024-05-06 07:08:09"; "[пусто]" for t = 0.
    static std::string GetDateAndTime(long t);
    // The same of the present moment.
    static std::string GetLocalDateAndTime();

private:
    std::vector<MGLine> m_lines; // in the order of adding
    int64_t m_type = 0;
};
