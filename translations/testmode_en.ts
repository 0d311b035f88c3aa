<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Gpsupdate</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>开始</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>固件：</source>
        <translation>File:</translation>
    </message>
    <message>
        <source>串口：</source>
        <translation>Port:</translation>
    </message>
    <message>
        <source>Check</source>
        <translation>Check</translation>
    </message>
    <message>
        <source>选择</source>
        <translation>Choose</translation>
    </message>
    <message>
        <source>复位0</source>
        <translation>Reset 0</translation>
    </message>
    <message>
        <source>复位1</source>
        <translation>Reset 1</translation>
    </message>
    <message>
        <source>清除</source>
        <translation>Clear</translation>
    </message>
    <message>
        <source>Return</source>
        <translation>Return</translation>
    </message>
    <message>
        <source>设置端口(重启)</source>
        <translation>Set port (restart)</translation>
    </message>
</context>
<context>
    <name>SerialSet</name>
    <message>
        <source>Dialog</source>
        <translation>Dialog</translation>
    </message>
    <message>
        <source>波特率：</source>
        <translation>Baud rate:</translation>
    </message>
    <message>
        <source>数据位：</source>
        <translation>Data bits:</translation>
    </message>
    <message>
        <source>停止位：</source>
        <translation>Stop bits:</translation>
    </message>
    <message>
        <source>校验类型：</source>
        <translation>Parity:</translation>
    </message>
    <message>
        <source>流控制：</source>
        <translation>Flow:</translation>
    </message>
</context>
<context>
    <name>SetupUsbForm</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>USB Port</source>
        <translation>USB Port</translation>
    </message>
    <message>
        <source>Port0</source>
        <translation>Port0</translation>
    </message>
    <message>
        <source>Port1</source>
        <translation>Port1</translation>
    </message>
    <message>
        <source>Port2</source>
        <translation>Port2</translation>
    </message>
    <message>
        <source>USB Speed</source>
        <translation>USB Speed</translation>
    </message>
    <message>
        <source>High Speed</source>
        <translation>High Speed</translation>
    </message>
    <message>
        <source>Full Speed</source>
        <translation>Full Speed</translation>
    </message>
    <message>
        <source>Test Pattern</source>
        <translation>Test Pattern</translation>
    </message>
    <message>
        <source>Eye Diagram</source>
        <translation>Eye Diagram</translation>
    </message>
    <message>
        <source>Test J</source>
        <translation>Test J</translation>
    </message>
    <message>
        <source>Test K</source>
        <translation>Test K</translation>
    </message>
    <message>
        <source>SE0</source>
        <translation>SE0</translation>
    </message>
    <message>
        <source>None</source>
        <translation>None</translation>
    </message>
    <message>
        <source>UPHY Parameter</source>
        <translation>UPHY Parameter</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Disconnect</translation>
    </message>
    <message>
        <source>Swing</source>
        <translation>Swing</translation>
    </message>
    <message>
        <source>0</source>
        <translation>0</translation>
    </message>
    <message>
        <source>Host Mode</source>
        <translation>Host Mode</translation>
    </message>
    <message>
        <source>Device Mode</source>
        <translation>Device Mode</translation>
    </message>
    <message>
        <source>Use UPHY</source>
        <translation>Use UPHY</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>Read</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>Write</translation>
    </message>
</context>
<context>
    <name>SystemToolsWidget</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>Screen Shot</source>
        <translation>Screen Shot</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>Enable</translation>
    </message>
    <message>
        <source>Disable</source>
        <translation>Disable</translation>
    </message>
    <message>
        <source>USB Log</source>
        <translation>USB Log</translation>
    </message>
    <message>
        <source>Copy log</source>
        <translation>Copy log</translation>
    </message>
    <message>
        <source>Open </source>
        <translation>Open </translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>CarPlay Dump</source>
        <translation>CarPlay Dump</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>End</source>
        <translation>End</translation>
    </message>
</context>
<context>
    <name>apple_dev_test</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>Apple Test</source>
        <translation>Apple Test</translation>
    </message>
    <message>
        <source>Client</source>
        <translation>Client</translation>
    </message>
    <message>
        <source>UDP 50</source>
        <translation>UDP 50</translation>
    </message>
    <message>
        <source>TCP</source>
        <translation>TCP</translation>
    </message>
    <message>
        <source>UDP 100</source>
        <translation>UDP 100</translation>
    </message>
    <message>
        <source>STOP</source>
        <translation>STOP</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>Server</translation>
    </message>
    <message>
        <source>UDP</source>
        <translation>UDP</translation>
    </message>
    <message>
        <source>USB Speed Sw</source>
        <translation>USB Speed Sw</translation>
    </message>
    <message>
        <source>OFF</source>
        <translation>OFF</translation>
    </message>
    <message>
        <source>NCM Sw</source>
        <translation>NCM Sw</translation>
    </message>
    <message>
        <source>NCM OFF</source>
        <translation>NCM OFF</translation>
    </message>
    <message>
        <source>Test Result:</source>
        <translation>Test Result:</translation>
    </message>
    <message>
        <source>Testing, please wait...</source>
        <translation>Testing, please wait...</translation>
    </message>
    <message>
        <source>USB 0 CDP MODE</source>
        <translation>USB 0 CDP MODE</translation>
    </message>
    <message>
        <source>USB 0 DCP MODE</source>
        <translation>USB 0 DCP MODE</translation>
    </message>
    <message>
        <source>USB 0 SDP MODE</source>
        <translation>USB 0 SDP MODE</translation>
    </message>
    <message>
        <source>USB NORMAL</source>
        <translation>USB NORMAL</translation>
    </message>
    <message>
        <source>USB TID</source>
        <translation>USB TID</translation>
    </message>
    <message>
        <source>USB MIF</source>
        <translation>USB MIF</translation>
    </message>
</context>
<context>
    <name>gps_test</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>numberInView</source>
        <translation>numberInView</translation>
    </message>
    <message>
        <source>numberInUse</source>
        <translation>numberInUse</translation>
    </message>
    <message>
        <source>Latitude</source>
        <translation>Latitude</translation>
    </message>
    <message>
        <source>Longitude</source>
        <translation>Longitude</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>Satellites ID</source>
        <translation>Satellites ID</translation>
    </message>
    <message>
        <source>Satellites Sig</source>
        <translation>Satellites Sig</translation>
    </message>
    <message>
        <source>Cold Start</source>
        <translation>Cold Start</translation>
    </message>
    <message>
        <source>Reset Install</source>
        <translation>Reset Install</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
</context>
<context>
    <name>mic_test</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>Mic Analog Gain:</source>
        <translation>Mic Analog Gain:</translation>
    </message>
    <message>
        <source>Prev</source>
        <translation>Prev</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Next</translation>
    </message>
    <message>
        <source>OP Gain:</source>
        <translation>OP Gain:</translation>
    </message>
    <message>
        <source>PGA Gain:</source>
        <translation>PGA Gain:</translation>
    </message>
    <message>
        <source>Up link Gain:</source>
        <translation>Up link Gain:</translation>
    </message>
</context>
<context>
    <name>serial_thread</name>
    <message>
        <source>错误</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>打开串口失败</source>
        <translation>The serial port cannot be opened</translation>
    </message>
</context>
<context>
    <name>testEntryWidget</name>
    <message>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <source>USB Tid</source>
        <translation>USB Tid</translation>
    </message>
    <message>
        <source>NCM Test</source>
        <translation>NCM Test</translation>
    </message>
    <message>
        <source>GPS test</source>
        <translation>GPS test</translation>
    </message>
    <message>
        <source>QUIT</source>
        <translation>QUIT</translation>
    </message>
    <message>
        <source>USB Test</source>
        <translation>USB Test</translation>
    </message>
    <message>
        <source>GPS Update</source>
        <translation>GPS Update</translation>
    </message>
    <message>
        <source>System Tools</source>
        <translation>System Tools</translation>
    </message>
    <message>
        <source>Mic Test</source>
        <translation>Mic Test</translation>
    </message>
</context>
<context>
    <name>testmode::AppleDevTest</name>
    <message>
        <source>Apple Test</source>
        <translation>Apple Test</translation>
    </message>
    <message>
        <source>USB Test</source>
        <translation>USB Test</translation>
    </message>
    <message>
        <source>Connect the accessory to an Apple device that Client Test</source>
        <translation>Connect the accessory to an Apple device that Client Test</translation>
    </message>
    <message>
        <source>Connect the accessory to an Apple device that Server Test</source>
        <translation>Connect the accessory to an Apple device that Server Test</translation>
    </message>
    <message>
        <source>Please wait a moment then press &lt;stop&gt; button</source>
        <translation>Please wait a moment then press &lt;stop&gt; button</translation>
    </message>
    <message>
        <source>ON</source>
        <translation>ON</translation>
    </message>
    <message>
        <source>OFF</source>
        <translation>OFF</translation>
    </message>
    <message>
        <source>NCM ON</source>
        <translation>NCM ON</translation>
    </message>
    <message>
        <source>NCM OFF</source>
        <translation>NCM OFF</translation>
    </message>
</context>
<context>
    <name>testmode::SatellitesListModel</name>
    <message>
        <source>ID: %1, Sig: %2dB</source>
        <translation>ID: %1, Sig: %2dB</translation>
    </message>
</context>
<context>
    <name>testmode::SetupUsbTest</name>
    <message>
        <source>-0</source>
        <translation>-0</translation>
    </message>
</context>
<context>
    <name>testmode::gps_test</name>
    <message>
        <source>GPS Duration time: </source>
        <translation>GPS Duration time: </translation>
    </message>
    <message>
        <source>System time: </source>
        <translation>System time: </translation>
    </message>
    <message>
        <source>GPS Time: %1 Y %2 M %3 D %4:%5:%6</source>
        <translation>GPS Time: %1 Y %2 M %3 D %4:%5:%6</translation>
    </message>
    <message>
        <source>AntennaState: </source>
        <translation>AntennaState: </translation>
    </message>
    <message>
        <source>Install status(CC is ok): </source>
        <translation>Install status(CC is ok): </translation>
    </message>
    <message>
        <source>Install status(3 is ok): </source>
        <translation>Install status(3 is ok): </translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Open</translation>
    </message>
</context>
<context>
    <name>testmode::gpsupdate</name>
    <message>
        <source>Not open partition_file!</source>
        <translation>Not open partition_file!</translation>
    </message>
    <message>
        <source>Not open bootloader_file!</source>
        <translation>Not open bootloader_file!</translation>
    </message>
    <message>
        <source>Not open app_file!</source>
        <translation>Not open app_file!</translation>
    </message>
    <message>
        <source>Not open cfg_path!</source>
        <translation>Not open cfg_path!</translation>
    </message>
    <message>
        <source>Not open cfg_file!</source>
        <translation>Not open cfg_file!</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Error</translation>
    </message>
</context>
<context>
    <name>testmode::mictestwidget</name>
    <message>
        <source>Uplink Gain: </source>
        <translation>Uplink Gain: </translation>
    </message>
    <message>
        <source>OP  Gain:</source>
        <translation>OP  Gain:</translation>
    </message>
    <message>
        <source>Pga Gain:</source>
        <translation>Pga Gain:</translation>
    </message>
    <message>
        <source>Mic Analog Gain:</source>
        <translation>Mic Analog Gain:</translation>
    </message>
    <message>
        <source>OP Gain:</source>
        <translation>OP Gain:</translation>
    </message>
    <message>
        <source>PGA Gain:</source>
        <translation>PGA Gain:</translation>
    </message>
</context>
</TS>
