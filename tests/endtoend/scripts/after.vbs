
If failures = 0 Then WScript.Echo "all " & checks & " checks passed"
