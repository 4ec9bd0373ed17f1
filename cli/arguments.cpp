#include "cli/arguments.h"

namespace varkel::cli {

namespace {

constexpr int kMaxJobs = 1024;
constexpr int kLongestTimeoutMs = 600'000;
constexpr int kShortestIntervalMs = 10;
constexpr int kLongestIntervalMs = 86'400'000;

constexpr char kFooter[] =
    R"(Examples:
  varkelctl --host 192.168.1.201 read --page Status
  varkelctl set "Spin Rate=1200" 7-9=100 --check
  varkelctl --targets line3.csv snapshot -o before/
  varkelctl compare before/QU64A2419C0087.json
  varkelctl rollback

A NAME is a variable's name as in the table, without its unit, or its identifier ("3-12").
Exit codes: 0 done, or no difference; 1 failed; 2 differences; 3 refused by the sensor or not verified;
4 no connection; 64 wrong usage. For several sensors, 4 takes precedence over 3, 1, 2 and 0.)";

void AddGlobalOptions(CLI::App& app, Arguments& arguments) {
  app.add_option("--host", arguments.hosts,
                 "Address of a sensor, with an optional port; repeatable (192.168.1.201:9347)")
      ->type_name("ADDR[:PORT]")
      ->allow_extra_args(false);
  app.add_option("--targets", arguments.targets,
                 "Table of sensors, CSV with the columns host, port, model, label")
      ->type_name("FILE");
  app.add_option("--model", arguments.model, "Model, the name of its table")
      ->type_name("NAME")
      ->capture_default_str();
  app.add_option("--tables", arguments.tables,
                 "Folder of the model tables (default: Config/varID next to the program's folder)")
      ->type_name("DIR");
  app.add_option("--rs485", arguments.rs485, "RS485 line of a Zelto")->type_name("PORT");
  app.add_option("--uart", arguments.uart, "UART line of a Zelto")->type_name("PORT");
  app.add_option("--jobs", arguments.jobs, "Number of sensors to work on at once")
      ->check(CLI::Range(1, kMaxJobs))
      ->type_name("N")
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout_ms, "Time-out for a reply, in milliseconds")
      ->check(CLI::Range(1, kLongestTimeoutMs))
      ->type_name("MS")
      ->capture_default_str();
  app.add_flag("--json", arguments.json, "One JSON object per sensor on standard output");
  app.add_option("--capture", arguments.capture, "Record all exchanges to a pcap file")->type_name("FILE");
  app.add_flag("--print-manual", arguments.print_manual)->group("");
  app.add_flag("--print-completion", arguments.print_completion)->group("");
}

CLI::App* AddCommand(CLI::App& app, Arguments& arguments, const char* name, const char* description) {
  CLI::App* const command = app.add_subcommand(name, description);
  command->callback([&arguments, name] { arguments.command = name; });
  return command;
}

void AddPages(CLI::App& command, Arguments& arguments) {
  command.add_option("--page", arguments.pages, "Title of a page; repeatable")
      ->type_name("TITLE")
      ->allow_extra_args(false);
}

void AddReadCommands(CLI::App& app, Arguments& arguments) {
  AddCommand(app, arguments, "models", "List the models");
  AddCommand(app, arguments, "info", "Identify the sensor");
  auto* command = AddCommand(app, arguments, "read", "Read variables");
  command->add_option("name", arguments.names, "Variables")->type_name("NAME");
  AddPages(*command, arguments);
  command->add_flag("--all", arguments.all, "Every variable");
  command = AddCommand(app, arguments, "watch", "Read variables repeatedly, one line per round");
  command->add_option("name", arguments.names, "Variables")->type_name("NAME")->required();
  command->add_option("--interval", arguments.interval_ms, "Milliseconds between two rounds")
      ->check(CLI::Range(kShortestIntervalMs, kLongestIntervalMs))
      ->type_name("MS")
      ->capture_default_str();
  command->add_option("--count", arguments.count, "Number of rounds; 0: until Ctrl+C")
      ->check(CLI::NonNegativeNumber)
      ->type_name("N")
      ->capture_default_str();
  command = AddCommand(app, arguments, "snapshot", "Save all values of the sensor to a file");
  command->add_option("-o", arguments.output, "The file, or an existing folder for SN.json")
      ->type_name("FILE")
      ->required();
  command =
      AddCommand(app, arguments, "compare", "Compare file and sensor, two files, or sensor and defaults");
  command->add_option("file", arguments.names, "Snapshots")->type_name("FILE")->expected(0, 2);
  command->add_flag("--defaults", arguments.defaults, "Compare the sensor with the defaults of its table");
  command->add_flag("--live", arguments.live, "Also compare values that the sensor itself keeps changing");
}

void AddChangeCommands(CLI::App& app, Arguments& arguments) {
  auto* command = AddCommand(app, arguments, "set", "Write variables");
  command->add_option("assignment", arguments.names, "What to write")->type_name("NAME=VALUE")->required();
  command->add_flag("--check", arguments.check, "Show what would be written, and write nothing");
  command->add_flag("--stop-on-refusal", arguments.stop_on_refusal, "Stop at the first refused command");
  command = AddCommand(app, arguments, "apply", "Write the values of a snapshot");
  command->add_option("file", arguments.file, "The snapshot")->type_name("FILE")->required();
  AddPages(*command, arguments);
  command->add_flag("--check", arguments.check, "Show what would be written, and write nothing");
  command->add_flag("--force", arguments.force,
                    "Allow another model, and overwrite fields that can't be read");
  command->add_flag("--stop-on-refusal", arguments.stop_on_refusal, "Stop at the first refused command");
  command = AddCommand(app, arguments, "rollback", "Undo the last change, or return to an earlier snapshot");
  command->add_flag("--list", arguments.list, "List the automatic snapshots of the sensor");
  command->add_option("id", arguments.id, "The snapshot; default: the newest")->type_name("ID");
}

void AddActions(CLI::App& app, Arguments& arguments) {
  auto* command = AddCommand(app, arguments, "send", "Send a raw command");
  command->add_option("code", arguments.code, "One byte in hexadecimal")->type_name("CODE")->required();
  command->add_option("payload", arguments.payload, "Bytes in hexadecimal, separated by spaces")
      ->type_name("PAYLOAD");
  for (const auto& [name, description] :
       {std::pair("restart", "Restart the sensor"), std::pair("reset", "Reset all settings of the sensor")}) {
    AddCommand(app, arguments, name, description)->add_flag("--yes", arguments.yes, "Do not ask");
  }
  command = AddCommand(app, arguments, "log", "Download a log");
  command->add_option("name", arguments.id, "Name of the log")->type_name("NAME")->required();
  command->add_option("-o", arguments.output, "Target folder")->type_name("FOLDER")->required();
  command = AddCommand(app, arguments, "operation-log", "Download the operation log");
  command->add_option("-o", arguments.output, "The archive")->type_name("FILE")->required();
  command = AddCommand(app, arguments, "upgrade", "Upgrade the firmware");
  command->add_option("file", arguments.file, "The package")->type_name("FILE")->required();
  command
      ->add_option("--mode", arguments.mode,
                   "What the package replaces (default: lidar; app on a small sensor)")
      ->check(CLI::IsMember({"app", "pbl", "junction", "lidar"}))
      ->type_name("MODE");
  command->add_flag("--no-wait", arguments.no_wait, "Do not wait for the sensor to come back");
}

/// The "table" command; only its subcommands have callbacks.
void AddTableCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* const table = app.add_subcommand("table", "Work with a model's table, without a sensor");
  table->require_subcommand(1);
  const auto add = [&](const char* name, const char* description) {
    CLI::App* const command = table->add_subcommand(name, description);
    command->callback([&arguments, name] { arguments.command = std::string("table ") + name; });
    return command;
  };
  auto* command = add("lint", "List every fault of a table; exit code 1 for errors, 2 for warnings only");
  command->add_option("table", arguments.table, "The model, or a file")->type_name("MODEL|FILE")->required();
  command = add("reference", "Write a reference manual of the model");
  command->add_option("table", arguments.table, "The model")->type_name("MODEL")->required();
  command->add_option("-o", arguments.output, "The file, .html or .md")->type_name("FILE")->required();
  command = add("dissector", "Write a Wireshark dissector for the model's variables");
  command->add_option("table", arguments.table, "The model; default: all models")->type_name("MODEL");
  command->add_option("-o", arguments.output, "The Lua file")->type_name("FILE")->required();
}

void AddCaptureCommands(CLI::App& app, Arguments& arguments) {
  auto* const group = app.add_subcommand("capture", "Show recorded exchanges");
  group->require_subcommand(1);
  auto* const show =
      group->add_subcommand("show", "Show the exchanges of a pcap file, decoded with the model's table");
  show->callback([&arguments] { arguments.command = "capture show"; });
  show->add_option("file", arguments.file, "The recording")->type_name("FILE")->required();
}

}  // namespace

std::unique_ptr<CLI::App> MakeParser(Arguments& arguments) {
  auto app = std::make_unique<CLI::App>("Inspects and configures lidar sensors", "varkelctl");
  app->footer(kFooter);
  app->set_version_flag("--version", "varkelctl " VARKEL_VERSION);
  app->fallthrough();
  AddGlobalOptions(*app, arguments);
  AddReadCommands(*app, arguments);
  AddChangeCommands(*app, arguments);
  AddActions(*app, arguments);
  AddTableCommands(*app, arguments);
  AddCaptureCommands(*app, arguments);
  app->require_subcommand(0, 1);
  return app;
}

}  // namespace varkel::cli
