
if (failures === 0) WScript.Echo("all " + checks + " checks passed");
