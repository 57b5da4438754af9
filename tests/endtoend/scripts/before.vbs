Option Explicit
Dim checks, failures
checks = 0
failures = 0

Sub Check(what, expected, actual)
    checks = checks + 1
    If expected <> actual Then
        failures = failures + 1
        WScript.Echo "FAILED: " & what & ": expected " & expected & ", got " & actual
    End If
End Sub

