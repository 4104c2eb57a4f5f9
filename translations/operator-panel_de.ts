<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Application</name>
    <message>
        <source>Error Loading embedded Fonts</source>
        <translation>Fehler beim Laden eingebetteter Schriften</translation>
    </message>
    <message>
        <source>Application</source>
        <translation>Anwendung</translation>
    </message>
</context>
<context>
    <name>CalibrationPage</name>
    <message>
        <source>Press &apos;&apos;Accept Calibration&apos;&apos; button within 10 seconds or wait till timer reaches 0 to automatically restore the old values.</source>
        <translation>Drücken Sie innerhalb von 10 Sekunden &apos;&apos;Kalibrierung übernehmen&apos;&apos;, sonst gelten bei 0 die alten Werte.</translation>
    </message>
</context>
<context>
    <name>DNSSettingsPage</name>
    <message>
        <source>DNS %1: </source>
        <translation>DNS %1: </translation>
    </message>
    <message>
        <source>DNS %1</source>
        <translation>DNS %1</translation>
    </message>
    <message>
        <source>dns%1</source>
        <translation>DNS %1</translation>
    </message>
</context>
<context>
    <name>IPAddressesPage</name>
    <message>
        <source>PLC: </source>
        <translation>SPS: </translation>
    </message>
    <message>
        <source>Netmask: </source>
        <translation>Netzmaske: </translation>
    </message>
    <message>
        <source>Gateway: </source>
        <translation>Gateway: </translation>
    </message>
    <message>
        <source>address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>netmask</source>
        <translation>Netzmaske</translation>
    </message>
    <message>
        <source>gateway</source>
        <translation>Gateway</translation>
    </message>
</context>
<context>
    <name>Language</name>
    <message>
        <source>-</source>
        <extracomment>All letters, signs and accented characters of this language that English does not have. Without fonts that have them the panel speaks English.</extracomment>
        <translation>ÄÖÜäöüß</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>MainWindow</source>
        <translation>MainWindow</translation>
    </message>
    <message>
        <source>Starting PLC...</source>
        <translation>SPS startet...</translation>
    </message>
    <message>
        <source>Firmware Version: 3.0.4</source>
        <translation>Firmware-Version: 3.0.4</translation>
    </message>
    <message>
        <source>Codesys RTS Version: 3.5.5.40</source>
        <translation>Codesys-RTS-Version: 3.5.5.40</translation>
    </message>
    <message>
        <source>dummy Info</source>
        <translation>dummy Info</translation>
    </message>
    <message>
        <source>PLC stopped</source>
        <translation>SPS gestoppt</translation>
    </message>
    <message>
        <source>no codesys application</source>
        <translation>keine Codesys-Applikation</translation>
    </message>
    <message>
        <source>IP: 123.456.789.123 </source>
        <translation>IP: 123.456.789.123 </translation>
    </message>
    <message>
        <source>Mask: 123.456.789.0</source>
        <translation>Maske: 123.456.789.0</translation>
    </message>
    <message>
        <source>MAC: 00:00:5E:00:53:10</source>
        <translation>MAC: 00:00:5E:00:53:10</translation>
    </message>
    <message>
        <source>Restart in</source>
        <translation>Neustart in</translation>
    </message>
    <message>
        <source>Seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>Restart System</source>
        <translation>System neu starten</translation>
    </message>
    <message>
        <source>ETH0 IP: %1</source>
        <translation>ETH0 IP: %1</translation>
    </message>
    <message>
        <source>ETH0 IP: %1%2</source>
        <translation>ETH0 IP: %1%2</translation>
    </message>
    <message>
        <source>ETH0 Mask: %1</source>
        <translation>ETH0 Maske: %1</translation>
    </message>
    <message>
        <source>ETH0 MAC: %1</source>
        <translation>ETH0 MAC: %1</translation>
    </message>
    <message>
        <source>ETH1 IP: %1</source>
        <translation>ETH1 IP: %1</translation>
    </message>
    <message>
        <source>ETH1 IP: %1%2</source>
        <translation>ETH1 IP: %1%2</translation>
    </message>
    <message>
        <source>ETH1 Mask: %1</source>
        <translation>ETH1 Maske: %1</translation>
    </message>
    <message>
        <source>ETH1 MAC: %1</source>
        <translation>ETH1 MAC: %1</translation>
    </message>
    <message>
        <source>ETH2 IP: %1</source>
        <translation>ETH2 IP: %1</translation>
    </message>
    <message>
        <source>ETH2 IP: %1%2</source>
        <translation>ETH2 IP: %1%2</translation>
    </message>
    <message>
        <source>ETH2 Mask: %1</source>
        <translation>ETH2 Maske: %1</translation>
    </message>
    <message>
        <source>ETH2 MAC: %1</source>
        <translation>ETH2 MAC: %1</translation>
    </message>
    <message>
        <source>Autoclose in</source>
        <translation>Schließt in</translation>
    </message>
    <message>
        <source>Restart failed, next attempt in</source>
        <translation>Neustart fehlgeschlagen, nächster Versuch in</translation>
    </message>
    <message>
        <source>Not restarted yet, next attempt in</source>
        <translation>Noch kein Neustart, nächster Versuch in</translation>
    </message>
    <message>
        <source>Firmware Version: </source>
        <translation>Firmware-Version: </translation>
    </message>
    <message>
        <source>Codesys RTS Version: </source>
        <translation>Codesys-RTS-Version: </translation>
    </message>
</context>
<context>
    <name>NetOpModeSettingsPage</name>
    <message>
        <source>Static</source>
        <translation>Statisch</translation>
    </message>
    <message>
        <source>DHCP</source>
        <translation>DHCP</translation>
    </message>
    <message>
        <source>IP-Address: </source>
        <translation>IP-Adresse: </translation>
    </message>
    <message>
        <source>%1</source>
        <translation>%1</translation>
    </message>
</context>
<context>
    <name>ProtectionPage</name>
    <message>
        <source>Password: </source>
        <translation>Passwort: </translation>
    </message>
    <message>
        <source>tries</source>
        <translation>Versuche</translation>
    </message>
    <message>
        <source>try</source>
        <translation>Versuch</translation>
    </message>
    <message>
        <source> You have %1 %2 left.</source>
        <translation> Sie haben noch %1 %2.</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>entry %1 not found in ini-file. Using default value for entry.</source>
        <translation>Eintrag %1 fehlt in der INI-Datei. Der Standardwert wird verwendet.</translation>
    </message>
    <message>
        <source>could not allocate memory for data in %1. Configuration aborted.</source>
        <translation>Kein Speicher für Daten in %1. Die Konfiguration wurde abgebrochen.</translation>
    </message>
    <message>
        <source>%1 ip-data is not valid. Please enter correct data.</source>
        <translation>%1 ist ungültig. Bitte geben Sie gültige IP-Daten ein.</translation>
    </message>
    <message>
        <source>can&apos;t access ini-file. Please check file permissions.</source>
        <translation>Kein Zugriff auf die INI-Datei. Bitte prüfen Sie die Dateirechte.</translation>
    </message>
    <message>
        <source>format problems in ini-file. Please check format and file contents.</source>
        <translation>Formatfehler in der INI-Datei. Bitte prüfen Sie Format und Inhalt der Datei.</translation>
    </message>
    <message>
        <source>can&apos;t allocate memory for wizard pages. Configuration aborted.</source>
        <translation>Kein Speicher für die Konfigurationsseiten. Die Konfiguration wurde abgebrochen.</translation>
    </message>
    <message>
        <source>couldn&apos;t create %1. Please check permissions.</source>
        <translation>Anlegen nicht möglich: %1. Bitte prüfen Sie die Rechte.</translation>
    </message>
    <message>
        <source>no backupdata for calibration available. Try external ts_calibrate program.</source>
        <translation>Keine Sicherung der Kalibrierdaten vorhanden. Verwenden Sie das externe Programm ts_calibrate.</translation>
    </message>
    <message>
        <source>could not open input device for touchscreen. Try external ts_calibrate program.</source>
        <translation>Das Eingabegerät des Touchscreens konnte nicht geöffnet werden. Verwenden Sie das externe Programm ts_calibrate.</translation>
    </message>
    <message>
        <source>Error in tslib function ts_config. Check the ts.conf file.</source>
        <translation>Fehler in der tslib-Funktion ts_config. Prüfen Sie die Datei ts.conf.</translation>
    </message>
    <message>
        <source>could not close input device for touchscreen. Please reboot and try again.</source>
        <translation>Das Eingabegerät des Touchscreens konnte nicht geschlossen werden. Bitte starten Sie das System neu und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>method %1 called with null pointer. Severe error, please contact support and report!!!</source>
        <translation>Methode %1 mit Nullzeiger aufgerufen. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>could not open file %1. Maybe file is missing or has wrong permissions.</source>
        <translation>Die Datei %1 konnte nicht geöffnet werden. Eventuell fehlt sie oder hat falsche Rechte.</translation>
    </message>
    <message>
        <source>could not write file %1. Maybe file is broken or has wrong permissions.</source>
        <translation>Die Datei %1 konnte nicht geschrieben werden. Eventuell ist sie defekt oder hat falsche Rechte.</translation>
    </message>
    <message>
        <source>could not read file %1. Maybe file is missing, broken or has wrong permissions.</source>
        <translation>Die Datei %1 konnte nicht gelesen werden. Eventuell fehlt sie, ist defekt oder hat falsche Rechte.</translation>
    </message>
    <message>
        <source>calibration backup data already loaded.</source>
        <translation>Die Sicherung der Kalibrierdaten ist bereits geladen.</translation>
    </message>
    <message>
        <source>Corrupt calibration data detected. Data will be cleared.</source>
        <translation>Fehlerhafte Kalibrierdaten erkannt. Die Daten werden gelöscht.</translation>
    </message>
    <message>
        <source>Automatic calibration timed out, touchscreen disabled. Calibration will be restarted on next startup. Please end calibration within 15 seconds.</source>
        <translation>Zeit für automatische Kalibrierung abgelaufen, Touchscreen gesperrt. Beim nächsten Start beginnt die Kalibrierung erneut. Sie haben dafür 15 Sekunden Zeit.</translation>
    </message>
    <message>
        <source>file data exceeds buffersize. Please check if datafile is corrupt.</source>
        <translation>Die Datei ist größer als der Puffer. Bitte prüfen Sie, ob sie beschädigt ist.</translation>
    </message>
    <message>
        <source>could not read touchscreen raw data. Try external ts_calibrate program.</source>
        <translation>Die Rohdaten des Touchscreens konnten nicht gelesen werden. Verwenden Sie das externe Programm ts_calibrate.</translation>
    </message>
    <message>
        <source>%1 port is not valid. Please enter correct data.</source>
        <translation>Port %1 ist ungültig. Bitte geben Sie gültige Daten ein.</translation>
    </message>
    <message>
        <source>empty filename or filename pointer detected. Severe error, please contact support and report!!!</source>
        <translation>Leerer Dateiname oder Nullzeiger erkannt. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>empty filename detected. Severe error, please contact support and report!!!</source>
        <translation>Leerer Dateiname erkannt. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Object %1 not found. This may be a feature which is not supported by your model.</source>
        <translation>Objekt %1 nicht gefunden. Eventuell unterstützt Ihr Modell diese Funktion nicht.</translation>
    </message>
    <message>
        <source>An illegal GPIO should bet set. Please contact support and report.</source>
        <translation>Versuch, einen unzulässigen GPIO zu setzen. Bitte melden Sie dies dem Support.</translation>
    </message>
    <message>
        <source>A GPIO should be set to an unsupported value. Please contact support and report.</source>
        <translation>Versuch, einen GPIO auf einen nicht unterstützten Wert zu setzen. Bitte melden Sie dies dem Support.</translation>
    </message>
    <message>
        <source>First wizardpage not set. Configuration aborted.</source>
        <translation>Die erste Konfigurationsseite fehlt. Die Konfiguration wurde abgebrochen.</translation>
    </message>
    <message>
        <source>Password incorrect. Please enter correct password to enter configuration.%1</source>
        <translation>Falsches Passwort. Bitte geben Sie das richtige Passwort für die Konfiguration ein.%1</translation>
    </message>
    <message>
        <source>No xml-data found in system configuration. Browser may not work correct!</source>
        <translation>Keine XML-Daten in der Systemkonfiguration. Der Browser arbeitet eventuell nicht richtig!</translation>
    </message>
    <message>
        <source>No memory for xml data pointer available. Can not start browser!</source>
        <translation>Kein Speicher für die XML-Daten. Der Browser kann nicht gestartet werden!</translation>
    </message>
    <message>
        <source>No path to browser set. Can not start browser!!!</source>
        <translation>Kein Pfad zum Browser angegeben. Der Browser kann nicht gestartet werden!!!</translation>
    </message>
    <message>
        <source>Not starting browser due to errors!!!</source>
        <translation>Der Browser wird wegen Fehlern nicht gestartet!!!</translation>
    </message>
    <message>
        <source>Browser not executable or browser and/or browserconfig not found. Please check path in sysconfig and file permissions for browser. Then reboot and try again.</source>
        <translation>Der Browser ist nicht ausführbar oder Browser und/oder Browserkonfiguration fehlen. Bitte prüfen Sie den Pfad in sysconfig und die Dateirechte des Browsers. Starten Sie dann das System neu und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>URL is not valid. Please check the URL you entered !!!</source>
        <translation>Die URL ist ungültig. Bitte prüfen Sie die eingegebene URL!!!</translation>
    </message>
    <message>
        <source>Could not detect MAC-Address. Severe error, please contact support and report!!!</source>
        <translation>Die MAC-Adresse konnte nicht ermittelt werden. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Missing tag %1 in sysconfig. Severe error, please contact support and report!!!</source>
        <translation>Das Tag %1 fehlt in sysconfig. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Conversion error in libini. Severe error, please contact support and report!!!</source>
        <translation>Konvertierungsfehler in libini. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Starting syscfg process ended with resultcode %1. Severe error, please contact support and report!!!</source>
        <translation>Der Aufruf von syscfg endete mit Rückgabewert %1. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Connection to vnc-server lost!!!</source>
        <translation>Verbindung zum VNC-Server verloren!!!</translation>
    </message>
    <message>
        <source>File %1 is not writeable. Severe error, please contact support and report!!!</source>
        <translation>Die Datei %1 ist nicht beschreibbar. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Could not erase file %1. New configuration may be corrupted. Severe error, please contact support and report!!!</source>
        <translation>Die Datei %1 konnte nicht gelöscht werden. Die neue Konfiguration ist eventuell fehlerhaft. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>%1. Severe error, please contact support and report!!!</source>
        <translation>%1. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Could not remount %1 to write calibration data. Severe error, please contact support and report!!!</source>
        <translation>Das Verzeichnis %1 konnte zum Schreiben der Kalibrierdaten nicht neu eingehängt werden. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Could not remount %1 to protect files. Severe error, please contact support and report!!!</source>
        <translation>Das Verzeichnis %1 konnte zum Schutz der Dateien nicht neu eingehängt werden. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Could not read DHCP IP-Address from interface. Severe error, please contact support and report!!!</source>
        <translation>Die DHCP-IP-Adresse der Schnittstelle konnte nicht gelesen werden. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Could not read DHCP Netmask from interface. Severe error, please contact support and report!!!</source>
        <translation>Die DHCP-Netzmaske der Schnittstelle konnte nicht gelesen werden. Schwerer Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>Could not set brightness to selected value.</source>
        <translation>Die gewählte Helligkeit konnte nicht eingestellt werden.</translation>
    </message>
    <message>
        <source>Default values set (become active after next reboot). You should run a configuration cycle as soon as possible.</source>
        <translation>Standardwerte gesetzt (wirksam nach dem nächsten Neustart). Sie sollten die Konfiguration so bald wie möglich durchführen.</translation>
    </message>
    <message>
        <source>empty directorylist detected. Severe internal error, please contact support and report!!!</source>
        <translation>Leere Verzeichnisliste erkannt. Schwerer interner Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>empty search entry detected. Severe internal error, please contact support and report!!!</source>
        <translation>Leerer Suchbegriff erkannt. Schwerer interner Fehler, bitte melden Sie ihn dem Support!!!</translation>
    </message>
    <message>
        <source>%1 </source>
        <translation>%1 </translation>
    </message>
    <message>
        <source>could not read touchscreen while waiting for the touch. Calibration is as before. Please check touchscreen and try again.</source>
        <translation>Der Touchscreen war beim Warten auf die Berührung nicht lesbar. Die Kalibrierung ist unverändert. Bitte prüfen Sie den Touchscreen und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>could not read touchscreen during the touch. Calibration is as before. Please check touchscreen and try again.</source>
        <translation>Der Touchscreen war während der Berührung nicht lesbar. Die Kalibrierung ist unverändert. Bitte prüfen Sie den Touchscreen und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>Netmask</source>
        <translation>Netzmaske</translation>
    </message>
    <message>
        <source>Gateway</source>
        <translation>Gateway</translation>
    </message>
    <message>
        <source>DNS1</source>
        <translation>DNS 1</translation>
    </message>
    <message>
        <source>DNS2</source>
        <translation>DNS 2</translation>
    </message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Abort</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>SummaryPage</name>
    <message>
        <source>Press SAVE to save all changes or CANCEL to abort.</source>
        <translation>SPEICHERN übernimmt alle Änderungen, ABBRECHEN verwirft sie.</translation>
    </message>
    <message>
        <source>No changes were made so press OKAY to leave configuration.</source>
        <translation>Es wurde nichts geändert. Mit OKAY verlassen Sie die Konfiguration.</translation>
    </message>
    <message>
        <source>SAVE</source>
        <translation>SPEICHERN</translation>
    </message>
    <message>
        <source>OKAY</source>
        <translation>OKAY</translation>
    </message>
    <message>
        <source>Network OP-Mode: </source>
        <translation>Netzwerkmodus: </translation>
    </message>
    <message>
        <source>set %1 to: %2</source>
        <translation>%1 gesetzt auf: %2</translation>
    </message>
</context>
<context>
    <name>VeltaCalibrationInputForm</name>
    <message>
        <source>Touchscreen Calibration:</source>
        <translation>Touchscreen-Kalibrierung:</translation>
    </message>
    <message>
        <source>Start Calibration</source>
        <translation>Kalibrierung starten</translation>
    </message>
    <message>
        <source>Accept Calibration</source>
        <translation>Kalibrierung übernehmen</translation>
    </message>
    <message>
        <source>Exit Calibration</source>
        <translation>Kalibrierung beenden</translation>
    </message>
</context>
<context>
    <name>VeltaCalibrationPanel</name>
    <message>
        <source>Touch crosshair a few seconds to calibrate</source>
        <translation>Fadenkreuz einige Sekunden lang berühren</translation>
    </message>
    <message>
        <source>screen colors: touch pressed (yellow)</source>
        <translation>Bildschirmfarben: berührt (gelb)</translation>
    </message>
    <message>
        <source>touch released (green = good, red = bad)</source>
        <translation>losgelassen (grün = gut, rot = schlecht)</translation>
    </message>
</context>
<context>
    <name>VeltaCalibrationPanelContext</name>
    <message>
        <source>old calibration data restored</source>
        <translation>Alte Kalibrierdaten wiederhergestellt</translation>
    </message>
</context>
<context>
    <name>VeltaDNSSettingsPage</name>
    <message>
        <source>Settings: Nameserver</source>
        <translation>Einstellungen: Nameserver</translation>
    </message>
    <message>
        <source>IP-Address 1:</source>
        <translation>IP-Adresse 1:</translation>
    </message>
    <message>
        <source>127.0.0.1</source>
        <translation>127.0.0.1</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Ändern</translation>
    </message>
    <message>
        <source>IP-Address 2:</source>
        <translation>IP-Adresse 2:</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Wechseln</translation>
    </message>
</context>
<context>
    <name>VeltaIPAddressesForm</name>
    <message>
        <source>Settings: IP-Addresses</source>
        <translation>Einstellungen: IP-Adressen</translation>
    </message>
    <message>
        <source>IP-Address 1:</source>
        <translation>IP-Adresse 1:</translation>
    </message>
    <message>
        <source>127.0.0.1</source>
        <translation>127.0.0.1</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Ändern</translation>
    </message>
    <message>
        <source>IP-Address 2:</source>
        <translation>IP-Adresse 2:</translation>
    </message>
    <message>
        <source>255.255.255.255</source>
        <translation>255.255.255.255</translation>
    </message>
    <message>
        <source>IP-Address 3:</source>
        <translation>IP-Adresse 3:</translation>
    </message>
</context>
<context>
    <name>VeltaInfoBox</name>
    <message>
        <source> (%1)</source>
        <translation> (%1)</translation>
    </message>
    <message>
        <source>Error %1: </source>
        <translation>Fehler %1: </translation>
    </message>
    <message>
        <source>&lt;center&gt;Error&lt;/center&gt;</source>
        <translation>&lt;center&gt;Fehler&lt;/center&gt;</translation>
    </message>
    <message>
        <source>Warning %1: </source>
        <translation>Warnung %1: </translation>
    </message>
    <message>
        <source>&lt;center&gt;Warning&lt;/center&gt;</source>
        <translation>&lt;center&gt;Warnung&lt;/center&gt;</translation>
    </message>
    <message>
        <source>&lt;center&gt;Information&lt;/center&gt;</source>
        <translation>&lt;center&gt;Information&lt;/center&gt;</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>OK (%1)</source>
        <translation>OK (%1)</translation>
    </message>
</context>
<context>
    <name>VeltaInputPanel</name>
    <message>
        <source>Cancel</source>
        <translation>Abbruch</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>SPACE</source>
        <translation>LEER</translation>
    </message>
    <message>
        <source>Timeout: %1</source>
        <translation>Restzeit: %1</translation>
    </message>
    <message>
        <source>Cancel</source>
        <comment>narrow key</comment>
        <translation>Abbr.</translation>
    </message>
</context>
<context>
    <name>VeltaInputPanelForm</name>
    <message>
        <source>Input Panel</source>
        <translation>Tastatur</translation>
    </message>
    <message>
        <source>Timeout: 99</source>
        <translation>Restzeit: 99</translation>
    </message>
</context>
<context>
    <name>VeltaNetOpModeForm</name>
    <message>
        <source>Settings: Network Mode</source>
        <translation>Einstellungen: Netzwerkmodus</translation>
    </message>
    <message>
        <source>IP-Address 1:</source>
        <translation>IP-Adresse 1:</translation>
    </message>
    <message>
        <source>static</source>
        <translation>statisch</translation>
    </message>
    <message>
        <source>Change</source>
        <translation>Wechseln</translation>
    </message>
</context>
<context>
    <name>VeltaProtectionForm</name>
    <message>
        <source>Settings Protection:</source>
        <translation>Schutz der Einstellungen:</translation>
    </message>
    <message>
        <source>IP-Address 1:</source>
        <translation>IP-Adresse 1:</translation>
    </message>
    <message>
        <source>Edit</source>
        <translation>Ändern</translation>
    </message>
</context>
<context>
    <name>VeltaSummaryForm</name>
    <message>
        <source>Settings: Summary</source>
        <translation>Einstellungen: Übersicht</translation>
    </message>
    <message>
        <source>SummaryText</source>
        <translation>SummaryText</translation>
    </message>
</context>
<context>
    <name>VeltaUtils</name>
    <message>
        <source>Error: unsupported widget</source>
        <translation>Fehler: nicht unterstütztes Widget</translation>
    </message>
    <message>
        <source>scaleFont called with unsupported widget %1</source>
        <translation>scaleFont mit nicht unterstütztem Widget %1 aufgerufen</translation>
    </message>
</context>
<context>
    <name>VeltaWizard</name>
    <message>
        <source>Next</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>SAVE</source>
        <translation>SPEICHERN</translation>
    </message>
    <message>
        <source>Expert</source>
        <translation>Experte</translation>
    </message>
</context>
</TS>
