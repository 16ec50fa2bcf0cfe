// qzctl: the terminal from the command line, over the qz_32 library.
#include <iostream>

#include "commands.h"

int main(int argc, char** argv) {
    using namespace qzctl;
    CLI::App app{"qzctl: drive the counter terminal through the qz_32 library"};
    app.require_subcommand(1);
    app.set_help_all_flag("--help-all", "Show help for all commands");

    Connection connection;
    bool json = false;
    app.add_option("-p,--port", connection.port, "Serial port number (0 is COM1) when no USB terminal is found")
        ->check(CLI::Range(0, 255));
    app.add_option("-b,--baud", connection.baud, "Serial speed (9600, 19200, 38400, 57600, 115200)");
    app.add_flag("--sim", connection.simulate, "Start the terminal simulator and talk to it");
    app.add_flag("--sim-serial", connection.simulate_serial_only,
                 "With --sim: offer only the serial line, no USB node");
    app.add_option("--scenario", connection.scenario, "With --sim: scenario file of the simulator")
        ->check(CLI::ExistingFile);
    app.add_option("--snapshot", connection.snapshot, "With --sim: save the simulated screen as PNG afterwards");
    app.add_flag("--json", json, "Print results as JSON");
    app.add_flag("-v,--verbose", connection.verbosity, "Say more (repeatable)");

    Action action;
    add_device_commands(app, action);
    add_card_commands(app, action);
    add_field_card_commands(app, action);
    add_identity_commands(app, action);
    add_pin_commands(app, action);
    add_pinpad_commands(app, action);
    add_screen_commands(app, action);
    add_lcd_commands(app, action);
    add_memcard_commands(app, action);
    add_scanner_commands(app, action);
    add_mechanism_commands(app, action);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? exit_ok : exit_usage;
    }
    if (connection.simulate_serial_only) connection.simulate = true;

    try {
        Session session(connection);
        Output out(json);
        action(session, out);
        if (!connection.snapshot.empty()) session.save_snapshot();
        out.print();
        return exit_ok;
    } catch (const Failure& failure) {
        std::cerr << "qzctl: " << failure.what() << "\n";
        return failure.code;
    }
}
