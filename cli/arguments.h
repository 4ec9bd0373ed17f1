#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

namespace varkel::cli {

/// The parsed command line.
struct Arguments {
  std::vector<std::string> hosts;
  std::string targets;
  std::string model = "Quenta";
  std::string tables;  ///< empty: the folder next to the program
  std::string rs485;
  std::string uart;
  int jobs = 32;
  int timeout_ms = 4000;
  bool json = false;
  std::string capture;  ///< where to record the exchanges; empty: nowhere

  std::string command;
  std::vector<std::string> names;  ///< names, assignments or files
  std::vector<std::string> pages;
  bool all = false;
  bool check = false;
  bool force = false;
  bool stop_on_refusal = false;
  bool list = false;
  bool yes = false;
  bool no_wait = false;
  bool defaults = false;
  bool live = false;
  std::string file;
  std::string table;  ///< a model, or the file of a table
  std::string output;
  std::string id;
  std::string code;
  std::string payload;
  std::string mode;
  int interval_ms = 1000;
  int count = 0;

  bool print_manual = false;
  bool print_completion = false;
};

/// Creates the command line parser, which fills `arguments`; these outlive it.
std::unique_ptr<CLI::App> MakeParser(Arguments& arguments);

}  // namespace varkel::cli
