// The tables of docs/filter-text.md, whose path is in the variable FILTER_TEXT_PAGE.
#pragma once

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

class FilterTextPage {
 public:
  using Row = std::vector<std::string>;  // its cells, without the marks of code

  static FilterTextPage Read() {
    FilterTextPage page;
    const char* path = std::getenv("FILTER_TEXT_PAGE");
    std::ifstream file(path ? path : "");
    std::string line, head;
    while (std::getline(file, line)) {
      if (line.empty() || line.front() != '|') {
        head.clear();
        continue;
      }
      const Row row = Cells(line);
      if (row.front().find("---") == 0) continue;
      if (head.empty())
        head = row[0] + "|" + row[1];
      else
        page.Take(head, row);
    }
    return page;
  }

  std::vector<Row> traces;    // row, time, machine, ...
  std::vector<Row> fields;    // field, holds, operators
  std::vector<Row> examples;  // filter text, rows
  std::vector<Row> errors;    // filter text, place, what it says
  std::vector<Row> trees;     // filter text, as the tree
  std::vector<Row> unknown;   // of tables with another head

  // "2 4-6" as {2, 4, 5, 6}.
  static std::vector<int> Numbers(const std::string& cell) {
    std::vector<int> numbers;
    for (std::size_t at = 0; at < cell.size();) {
      char* end = nullptr;
      const int first = static_cast<int>(std::strtol(cell.c_str() + at, &end, 10));
      const int last = *end == '-' ? static_cast<int>(std::strtol(end + 1, &end, 10)) : first;
      for (int number = first; number <= last; ++number) numbers.push_back(number);
      at = static_cast<std::size_t>(end - cell.c_str()) + 1;
    }
    return numbers;
  }

 private:
  void Take(const std::string& head, const Row& row) {
    if (head == "row|time")
      traces.push_back(row);
    else if (head == "field|holds")
      fields.push_back(row);
    else if (head == "filter text|rows")
      examples.push_back(row);
    else if (head == "filter text|place")
      errors.push_back(row);
    else if (head == "filter text|as the tree")
      trees.push_back(row);
    else
      unknown.push_back(row);
  }

  static std::string Trimmed(std::string cell) {
    while (!cell.empty() && cell.front() == ' ') cell.erase(0, 1);
    while (!cell.empty() && cell.back() == ' ') cell.pop_back();
    const bool isCode =
        cell.size() > 1 && cell.front() == '`' && cell.find('`', 1) == cell.size() - 1;
    return isCode ? cell.substr(1, cell.size() - 2) : cell;
  }

  static Row Cells(const std::string& line) {
    Row cells;
    std::string cell;
    for (std::size_t at = 1; at < line.size(); ++at) {
      if (line[at] == '|') {
        cells.push_back(Trimmed(cell));
        cell.clear();
      } else {
        // A bar within a cell has a backslash.
        if (line[at] == '\\' && at + 1 < line.size() && line[at + 1] == '|') ++at;
        cell.push_back(line[at]);
      }
    }
    return cells;
  }
};
