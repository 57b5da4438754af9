var checks = 0;
var failures = 0;

function check(what, expected, actual) {
    ++checks;
    if (expected === actual) return;
    ++failures;
    WScript.Echo("FAILED: " + what + ": expected " + expected + ", got " + actual);
}

