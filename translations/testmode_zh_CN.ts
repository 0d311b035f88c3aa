<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>Gpsupdate</name>
    <message>
        <source>Form</source>
        <translation>窗体</translation>
    </message>
    <message>
        <source>开始</source>
        <translation>开始</translation>
    </message>
    <message>
        <source>固件：</source>
        <translation>固件：</translation>
    </message>
    <message>
        <source>串口：</source>
        <translation>串口：</translation>
    </message>
    <message>
        <source>Check</source>
        <translation>检查</translation>
    </message>
    <message>
        <source>选择</source>
        <translation>选择</translation>
    </message>
    <message>
        <source>复位0</source>
        <translation>复位0</translation>
    </message>
    <message>
        <source>复位1</source>
        <translation>复位1</translation>
    </message>
    <message>
        <source>清除</source>
        <translation>清除</translation>
    </message>
    <message>
        <source>Return</source>
        <translation>返回</translation>
    </message>
    <message>
        <source>设置端口(重启)</source>
        <translation>设置端口(重启)</translation>
    </message>
</context>
<context>
    <name>SerialSet</name>
    <message>
        <source>Dialog</source>
        <translation>对话框</translation>
    </message>
    <message>
        <source>波特率：</source>
        <translation>波特率：</translation>
    </message>
    <message>
        <source>数据位：</source>
        <translation>数据位：</translation>
    </message>
    <message>
        <source>停止位：</source>
        <translation>停止位：</translation>
    </message>
    <message>
        <source>校验类型：</source>
        <translation>校验类型：</translation>
    </message>
    <message>
        <source>流控制：</source>
        <translation>流控制：</translation>
    </message>
</context>
<context>
    <name>SetupUsbForm</name>
    <message>
        <source>Form</source>
        <translation>窗体</translation>
    </message>
    <message>
        <source>USB Port</source>
        <translation>USB 端口</translation>
    </message>
    <message>
        <source>Port0</source>
        <translation>端口0</translation>
    </message>
    <message>
        <source>Port1</source>
        <translation>端口1</translation>
    </message>
    <message>
        <source>Port2</source>
        <translation>端口2</translation>
    </message>
    <message>
        <source>USB Speed</source>
        <translation>USB 速度</translation>
    </message>
    <message>
        <source>High Speed</source>
        <translation>高速</translation>
    </message>
    <message>
        <source>Full Speed</source>
        <translation>全速</translation>
    </message>
    <message>
        <source>Test Pattern</source>
        <translation>测试模式</translation>
    </message>
    <message>
        <source>Eye Diagram</source>
        <translation>眼图</translation>
    </message>
    <message>
        <source>Test J</source>
        <translation>测试 J</translation>
    </message>
    <message>
        <source>Test K</source>
        <translation>测试 K</translation>
    </message>
    <message>
        <source>SE0</source>
        <translation>SE0</translation>
    </message>
    <message>
        <source>None</source>
        <translation>无</translation>
    </message>
    <message>
        <source>UPHY Parameter</source>
        <translation>UPHY 参数</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>断开阈值</translation>
    </message>
    <message>
        <source>Swing</source>
        <translation>摆幅</translation>
    </message>
    <message>
        <source>0</source>
        <translation>0</translation>
    </message>
    <message>
        <source>Host Mode</source>
        <translation>主机模式</translation>
    </message>
    <message>
        <source>Device Mode</source>
        <translation>设备模式</translation>
    </message>
    <message>
        <source>Use UPHY</source>
        <translation>使用 UPHY</translation>
    </message>
    <message>
        <source>Read</source>
        <translation>读取</translation>
    </message>
    <message>
        <source>Write</source>
        <translation>写入</translation>
    </message>
</context>
<context>
    <name>SystemToolsWidget</name>
    <message>
        <source>Form</source>
        <translation>窗体</translation>
    </message>
    <message>
        <source>Screen Shot</source>
        <translation>截屏</translation>
    </message>
    <message>
        <source>Enable</source>
        <translation>启用</translation>
    </message>
    <message>
        <source>Disable</source>
        <translation>停用</translation>
    </message>
    <message>
        <source>USB Log</source>
        <translation>USB 日志</translation>
    </message>
    <message>
        <source>Copy log</source>
        <translation>复制日志</translation>
    </message>
    <message>
        <source>Open </source>
        <translation>打开</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>CarPlay Dump</source>
        <translation>CarPlay 抓包</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>开始</translation>
    </message>
    <message>
        <source>End</source>
        <translation>结束</translation>
    </message>
</context>
<context>
    <name>apple_dev_test</name>
    <message>
        <source>Form</source>
        <translation>窗体</translation>
    </message>
    <message>
        <source>Apple Test</source>
        <translation>Apple 测试</translation>
    </message>
    <message>
        <source>Client</source>
        <translation>客户端</translation>
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
        <translation>停止</translation>
    </message>
    <message>
        <source>Server</source>
        <translation>服务端</translation>
    </message>
    <message>
        <source>UDP</source>
        <translation>UDP</translation>
    </message>
    <message>
        <source>USB Speed Sw</source>
        <translation>USB 速度开关</translation>
    </message>
    <message>
        <source>OFF</source>
        <translation>关</translation>
    </message>
    <message>
        <source>NCM Sw</source>
        <translation>NCM 开关</translation>
    </message>
    <message>
        <source>NCM OFF</source>
        <translation>NCM 关</translation>
    </message>
    <message>
        <source>Test Result:</source>
        <translation>测试结果：</translation>
    </message>
    <message>
        <source>Testing, please wait...</source>
        <translation>正在测试，请稍候…</translation>
    </message>
    <message>
        <source>USB 0 CDP MODE</source>
        <translation>USB 0 CDP 模式</translation>
    </message>
    <message>
        <source>USB 0 DCP MODE</source>
        <translation>USB 0 DCP 模式</translation>
    </message>
    <message>
        <source>USB 0 SDP MODE</source>
        <translation>USB 0 SDP 模式</translation>
    </message>
    <message>
        <source>USB NORMAL</source>
        <translation>USB 正常</translation>
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
        <translation>窗体</translation>
    </message>
    <message>
        <source>numberInView</source>
        <translation>可见卫星</translation>
    </message>
    <message>
        <source>numberInUse</source>
        <translation>使用卫星</translation>
    </message>
    <message>
        <source>Latitude</source>
        <translation>纬度</translation>
    </message>
    <message>
        <source>Longitude</source>
        <translation>经度</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>速度</translation>
    </message>
    <message>
        <source>Satellites ID</source>
        <translation>卫星编号</translation>
    </message>
    <message>
        <source>Satellites Sig</source>
        <translation>卫星信号</translation>
    </message>
    <message>
        <source>Cold Start</source>
        <translation>冷启动</translation>
    </message>
    <message>
        <source>Reset Install</source>
        <translation>重置安装</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message>
        <source>Version:</source>
        <translation>版本：</translation>
    </message>
</context>
<context>
    <name>mic_test</name>
    <message>
        <source>Form</source>
        <translation>窗体</translation>
    </message>
    <message>
        <source>Mic Analog Gain:</source>
        <translation>麦克风模拟增益：</translation>
    </message>
    <message>
        <source>Prev</source>
        <translation>上一档</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>下一档</translation>
    </message>
    <message>
        <source>OP Gain:</source>
        <translation>OP 增益：</translation>
    </message>
    <message>
        <source>PGA Gain:</source>
        <translation>PGA 增益：</translation>
    </message>
    <message>
        <source>Up link Gain:</source>
        <translation>上行增益：</translation>
    </message>
</context>
<context>
    <name>serial_thread</name>
    <message>
        <source>错误</source>
        <translation>错误</translation>
    </message>
    <message>
        <source>打开串口失败</source>
        <translation>打开串口失败</translation>
    </message>
</context>
<context>
    <name>testEntryWidget</name>
    <message>
        <source>Form</source>
        <translation>窗体</translation>
    </message>
    <message>
        <source>USB Tid</source>
        <translation>USB Tid</translation>
    </message>
    <message>
        <source>NCM Test</source>
        <translation>NCM 测试</translation>
    </message>
    <message>
        <source>GPS test</source>
        <translation>GPS 测试</translation>
    </message>
    <message>
        <source>QUIT</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>USB Test</source>
        <translation>USB 测试</translation>
    </message>
    <message>
        <source>GPS Update</source>
        <translation>GPS 升级</translation>
    </message>
    <message>
        <source>System Tools</source>
        <translation>系统工具</translation>
    </message>
    <message>
        <source>Mic Test</source>
        <translation>麦克风测试</translation>
    </message>
</context>
<context>
    <name>testmode::AppleDevTest</name>
    <message>
        <source>Apple Test</source>
        <translation>Apple 测试</translation>
    </message>
    <message>
        <source>USB Test</source>
        <translation>USB 测试</translation>
    </message>
    <message>
        <source>Connect the accessory to an Apple device that Client Test</source>
        <translation>将附件连接到 Apple 设备进行客户端测试</translation>
    </message>
    <message>
        <source>Connect the accessory to an Apple device that Server Test</source>
        <translation>将附件连接到 Apple 设备进行服务端测试</translation>
    </message>
    <message>
        <source>Please wait a moment then press &lt;stop&gt; button</source>
        <translation>请稍候，然后按“停止”</translation>
    </message>
    <message>
        <source>ON</source>
        <translation>开</translation>
    </message>
    <message>
        <source>OFF</source>
        <translation>关</translation>
    </message>
    <message>
        <source>NCM ON</source>
        <translation>NCM 开</translation>
    </message>
    <message>
        <source>NCM OFF</source>
        <translation>NCM 关</translation>
    </message>
</context>
<context>
    <name>testmode::SatellitesListModel</name>
    <message>
        <source>ID: %1, Sig: %2dB</source>
        <translation>编号: %1, 信号: %2dB</translation>
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
        <translation>GPS 持续时间：</translation>
    </message>
    <message>
        <source>System time: </source>
        <translation>系统时间：</translation>
    </message>
    <message>
        <source>GPS Time: %1 Y %2 M %3 D %4:%5:%6</source>
        <translation>GPS 时间：%1 年 %2 月 %3 日 %4:%5:%6</translation>
    </message>
    <message>
        <source>AntennaState: </source>
        <translation>天线状态：</translation>
    </message>
    <message>
        <source>Install status(CC is ok): </source>
        <translation>安装状态(CC 为正常)：</translation>
    </message>
    <message>
        <source>Install status(3 is ok): </source>
        <translation>安装状态(3 为正常)：</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
</context>
<context>
    <name>testmode::gpsupdate</name>
    <message>
        <source>Not open partition_file!</source>
        <translation>无法打开 partition_file！</translation>
    </message>
    <message>
        <source>Not open bootloader_file!</source>
        <translation>无法打开 bootloader_file！</translation>
    </message>
    <message>
        <source>Not open app_file!</source>
        <translation>无法打开 app_file！</translation>
    </message>
    <message>
        <source>Not open cfg_path!</source>
        <translation>无法打开 cfg_path！</translation>
    </message>
    <message>
        <source>Not open cfg_file!</source>
        <translation>无法打开 cfg_file！</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
</context>
<context>
    <name>testmode::mictestwidget</name>
    <message>
        <source>Uplink Gain: </source>
        <translation>上行增益：</translation>
    </message>
    <message>
        <source>OP  Gain:</source>
        <translation>OP 增益：</translation>
    </message>
    <message>
        <source>Pga Gain:</source>
        <translation>PGA 增益：</translation>
    </message>
    <message>
        <source>Mic Analog Gain:</source>
        <translation>麦克风模拟增益：</translation>
    </message>
    <message>
        <source>OP Gain:</source>
        <translation>OP 增益：</translation>
    </message>
    <message>
        <source>PGA Gain:</source>
        <translation>PGA 增益：</translation>
    </message>
</context>
</TS>
