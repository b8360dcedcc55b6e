"""Special cases of single examples. An entry that no example uses is a failure."""

# Examples that are not run, and why. Tour.check_unrun checks what it can without a run.
NOT_RUN = {
    r"\./dev \w+.*": "builds or checks the whole project; its commands are compared with the script",
    r"(sudo )?systemctl .*": "needs a system's manager; tests/apps/quord/units_test.cpp reads the units",
    r"sudo apt install .*": "changes the machine's packages; ./dev package installs them in a bare root",
    r"(sudo )?cmake .*build/(headless|quor)\b.*": "packaging/check_builds.py makes these builds",
    r"sudo ldconfig.*": "changes the machine's linker cache",
    r"docker run .*": "needs containers; the same was tried with namespaces",
    r"sudo -u orders .*": "needs an account of its own",
    r"sudo (chown|adduser) .*": "needs an account of its own",
    r"trc .*(--user |orders/shop).*": "needs several accounts; packaging/try_packages_inside.sh has them",
    r"nats-server .*": "needs its ports and /var; tests/support/nats_server.h starts servers",
    r"sudo (mkdir|cp) .*/etc/quor.*": "changes the machine's configuration",
    r"echo QUOR_ENGINE=.*": "changes the machine's configuration",
    r"quor-bridge (init|publish|read) .*": "needs servers of an engine; tests/apps/bridge has them",
    r"quord --machine": "needs root and an account; packaging/try_packages_inside.sh has them",
}

# The values of words in capitals.
STANDS_FOR = {
    "FILE": "sample.trc", "FILE...": "sample.trc web.trc", "IN.trc": "sample.trc", "OUT.trc": "out.trc",
    "OUT.csv": "out.csv", "OLD.trc": "old.trc", "NEW.trc": "new.trc", "PATTERN": "order", "LOG": "syslog", "N": "5",
    "MACHINE": "localhost", "APP": "orders", "APPLICATION": "orders", "NAME": "other",
    "COMPONENT/CATEGORY": "Database/Query", "COMMAND": "dump",
}

# Complete commands for mentions in a sentence that leave something out.
WHOLE = {
    "quord --listen": "quord --foreground --listen 127.0.0.1:0",
    "tessera --settings FILE": "tessera --settings own.ini sample.trc",
    "ninja -C build/dev documents_tests": "ninja -n -C build/dev documents_tests",
    "man trc": "test -s $PAGES_TEST/../../packaging/man/trc.1",
}

# What a page's packages would have installed where programs find it; {build}, {root} and {home}
# are folders.
INSTALLED = {
    "docs/from-your-logger.md": {"LD_LIBRARY_PATH": "{build}/packaging/quor",
                                 "PYTHONPATH": "{root}/bindings/python", "NODE_PATH": "{build}/bindings/node",
                                 "PKG_CONFIG_PATH": "{home}/quor/lib/pkgconfig"},
}

# Steps before an example that the page leaves to the reader.
BEFORE = {
    "QUOR_KEYS=~/alice trc tail orders1.example.org": "cp -rp ~/.config/quor/keys ~/alice",
    "c++ -std=c++17 orders_spdlog.cpp $(pkg-config --cflags --libs quor spdlog) -o orders_spdlog":
        'cmake --install "$(dirname "$(command -v trc)")/.." --component quor --prefix ~/quor',
    "trc forget orders": "trc set --persist orders '*=support'",
    "quord keys init": "rm -rf ~/.config/quor/keys",
    "quord --listen 0.0.0.0:7447": "[ -e ~/.config/quor/keys ] || quord keys init",
    "quord --foreground --listen 127.0.0.1:0": "quord keys init",
    "quor-bridge otlp-in --listen 127.0.0.1:4318 --listen 0.0.0.0:4319":
        "[ -e ~/.config/quor/keys ] || quord keys init",
    "quor-bridge otlp-out https://collector.example.org --header-file token.txt":
        "echo 'Authorization: Bearer example' >token.txt && chmod 600 token.txt",
    "quord keys issue alice --role configure --days 90":
        "[ -e ~/.config/quor/keys ] || quord keys init",
}

# Where the exit status may be another than 0, and why.
STATUS = {
    # At full speed traces may be lost.
    "trc emit --app load --count 1000000 --threads 4 --text-bytes 100": (0, 1),
    # Its file is not what the machine of the help has in force.
    "trc config diff localhost orders.tcf": (0, 1),
    "trc config diff orders.tcf all.tcf": (0, 1),
    # The page says: "if one runs already".
    'pkill -TERM -x -u "$USER" quord': (0, 1),
}

# The machine on which a line of docs/remote.md is typed, if the line does not say it.
REMOTE = "docs/remote.md"
TYPED_ON = (
    ("As a system service", r".*", "account"),
    ("When it does not work", r".*", "other"),
    ("Watch a server from your desk", r"quord|pkill", "orders1"),
    ("Forward traces to another machine", r"mkdir|scp|trc sink", "shop1"),
    ("Forward traces to another machine", r"quord", "orders1"),
    ("", r".*", "desk"),
)

# Quoted outputs: words of the page that an example prints or a machine logs.
TOLD = (
    (REMOTE, "listening on 0.0.0.0:7447 (mutual TLS)", "quord --listen 0.0.0.0:7447", None),
    (REMOTE, "forwarding to orders1.example.org:7447",
     "trc tail orders1.example.org --columns Machine,Application,Trace", "shop1"),
)
