// Rows of the reports that the examples leave.
#ifndef TESTS_DOCS_REPORT_H
#define TESTS_DOCS_REPORT_H

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

/// The cells of the row that ends in `name`; empty if there is none. The columns are those of docs/file-formats.md.
inline std::vector<std::string> row_of(char const *report, std::string const &name)
{
    std::ifstream in(report);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::vector<std::string> cells;
        std::istringstream row(line);
        for (std::string cell; std::getline(row, cell, '\t');)
            cells.push_back(cell);
        if (cells.size() == 9 && cells.back() == name)
            return cells;
    }
    return {};
}

#endif
