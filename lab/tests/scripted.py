"""A Setup.ini with every kind of scripted operation."""

import _check
import _scenario
from machinelib import registry

FAILED = "ExecutSingleFileOper: File oper req "
SETTINGS = _scenario.changed(_scenario.NO_SWITCH, _scenario.QUICK, {
    "INSTALL": {"MODE": 3},
    "PROCESS": {"OPERNUM": 1,
                "OPER00": "1,%s,Software\\Omdrel\\Demo,Started,yes,1,HKEY_CURRENT_USER"},
    "USER_ENV_PARA": {"PORT": "COM7"},
    "PRE_REG_OPER.INSTALL": {
        "OPERNUM": 4,
        # a literal, a variable of Setup.ini, and two values to take away again
        "OPER00": "1,%s,Software\\Omdrel\\Demo,Port,%s,1,HKEY_CURRENT_USER,$PORT",
        "OPER01": "1,%s,Software\\Omdrel\\Demo,Old,x,1,HKEY_CURRENT_USER",
        "OPER02": "1,%s,Software\\Omdrel\\Demo\\Sub,Value,x,1,HKEY_CURRENT_USER",
        "OPER03": "1,%s,Software\\Omdrel\\Demo\\Sub2,Value,x,1,HKEY_CURRENT_USER"},
    "POST_REG_OPER.INSTALL": {
        "OPERNUM": 3,
        "OPER00": "2,%s,Software\\Omdrel\\Demo,Old,,1,HKEY_CURRENT_USER",
        "OPER01": "2,%s,Software\\Omdrel\\Demo\\,Sub,,1,HKEY_CURRENT_USER",
        "OPER02": "3,%s,Software\\Omdrel\\Demo,Port,,1,HKEY_CURRENT_USER"},
    "PRE_FILE_OPER.INSTALL": {
        "OPERNUM": 4,
        "OPER00": "1,%s,,x,x,C:\\omdrel",
        "OPER01": "1,%s,new.txt,x,x,C:\\omdrel\\",
        "OPER02": "3,%s,Setup.ini,%s,copy.ini,$CD,C:\\omdrel\\",
        "OPER03": "3,%s,Setup.ini,%s,guarded.ini,$CD,C:\\"},
    "POST_FILE_OPER.INSTALL": {
        "OPERNUM": 2,
        "OPER00": "2,%s,new.txt,x,x,C:\\omdrel\\",
        "OPER01": "2,%s,not there.txt,x,x,C:\\omdrel\\"},
})


def test_operations():
    """Folders, files, copies and deletions, and registry values set, deleted and asked for, are
    done in their order, and a failing one, as a copy onto a read-only file, does not stop the
    run."""
    with _scenario.plugged("demo", SETTINGS, pace=_scenario.PACE) as on:
        guarded = on.prefix / "drive_c" / "guarded.ini"
        guarded.write_text("as before")
        guarded.chmod(0o444)
        lines = _scenario.run(on, "-i", 1)
        failed = [line for line in lines if " oper" in line and "fail" in line]
        _check.equal("failed operations", failed, [
            FAILED + "3,C:\\setup\\,Setup.ini,C:\\,guarded.ini,$CD,C:\\ fail,"
            "error code 0x00000005",
            FAILED + "2,C:\\omdrel\\,not there.txt,x,x,C:\\omdrel\\ fail,error code 0x00000002"],
            lines)
        _check.equal("the read-only file", guarded.read_text(), "as before")
        folder = on.file("C:\\omdrel")
        _check.equal("files", sorted(path.name for path in folder.iterdir()), ["copy.ini"])
        _check.equal("the copy", (folder / "copy.ini").read_bytes(),
                     (on.program / "Setup.ini").read_bytes())
        found = {key.rsplit("Omdrel\\", 1)[1]: registry.values_of(lines)
                 for key, lines in on.snapshot().registry.items() if "Omdrel\\" in key}
        _check.equal("registry", found, {
            "Demo": {"Started": '"yes"', "Port": '"COM7"'}, "Demo\\Sub2": {"Value": '"x"'}})
