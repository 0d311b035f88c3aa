#include "ugrade_thread.h"

#include "agent_images.h"
#include "bootrom_protocol.h"
#include "protocol_step.h"
#include "serial_thread.h"
#include "tools/common.h"
#include "tools/debugtrace.h"

#include <QCoreApplication>

ugrade_thread::ugrade_thread(QString port)
    : portName(port), transportThread(new QThread), serial(new serial_thread(port)),
      package(&downloadfile)
{
    serial->moveTo(transportThread);
    transportThread->start(QThread::TimeCriticalPriority);
    DBG << transportThread << portName << QThread::currentThreadId();
    connectTransport();

    // A process that ends must not take the thread away under a running update.
    if (QCoreApplication *application = QCoreApplication::instance())
        connect(application, &QCoreApplication::aboutToQuit, this, &ugrade_thread::shutDown,
                Qt::DirectConnection);
}

ugrade_thread::~ugrade_thread()
{
    shutDown();
    delete serial;
    delete transportThread;
}

// Blocking, all of them: one transport operation at a time, and pointers into the worker's stack
// stay valid for as long as the transport has them.
void ugrade_thread::connectTransport()
{
    constexpr auto blocking = Qt::BlockingQueuedConnection;
    using Worker = ugrade_thread;
    using Port = serial_thread;
    connect(this, &Worker::hdl_uart_init, serial, &Port::serial_init, blocking);
    connect(this, &Worker::hdl_uart_deinit, serial, &Port::serial_deinit, blocking);
    connect(this, &Worker::hdl_uart_get_byte, serial, &Port::serial_getbyte, blocking);
    connect(this, &Worker::hdl_uart_get_data16, serial, &Port::serial_get_data16, blocking);
    connect(this, &Worker::hdl_uart_get_data32, serial, &Port::serial_get_data32, blocking);
    connect(this, &Worker::hdl_uart_get_byte_buffer, serial, &Port::serial_get_byte_buff, blocking);
    connect(this, &Worker::hdl_uart_put_byte, serial, &Port::serial_putbyte, blocking);
    connect(this, &Worker::hdl_uart_put_data16, serial, &Port::serial_put_data16, blocking);
    connect(this, &Worker::hdl_uart_put_data32, serial, &Port::serial_put_data32, blocking);
    connect(this, &Worker::hdl_uart_put_byte_buffer, serial, &Port::serial_put_byte_buff, blocking);
    connect(this, &Worker::hdl_uart_set_baudrate, serial, &Port::serial_set_baudrate, blocking);
    connect(this, &Worker::hdl_uart_get_bytes, serial, &Port::serial_get_bytes, blocking);
}

// The worker first: run() still needs the transport's event loop. Asked to end, it gives up what
// has written nothing yet, finishes what is being written, and waits for no receiver that is
// silent.
void ugrade_thread::shutDown()
{
    transportThread->requestInterruption();
    requestInterruption();
    wait();
    transportThread->quit();
    transportThread->wait();
}

void ugrade_thread::start(Priority priority)
{
    if (!isRunning())
        takePackage();
    QThread::start(priority);
}

void ugrade_thread::takePackage()
{
    taken = downloadfile;
    package = &taken;
}

void ugrade_thread::run()
{
    hdl_da_info_t info = {bootrom::kAuxiliaryAddress, bootrom::kAgentAddress, sizeof da_array};
    hdl_da_report_t report = {};

    if (package != &taken) // started as any other thread
        takePackage();
    const auto bytes = [](const QByteArray &image) { return static_cast<uint32_t>(image.size()); };
    // clang-format off
    _hdl_image_t config = {
        0x200000, 0x083FF000, bytes(taken.config_bin), "gnss_config.bin", 3, 0, nullptr};
    _hdl_image_t application = {
        0x120000, 0x08013000, bytes(taken.app_bin), "gnss_demo.bin", 2, 0, &config};
    _hdl_image_t partitionTable = {
        0x1F0000, 0x08000000, bytes(taken.partition_bin), "partition_table.bin", 1, 0, &application};
    _hdl_image_t bootLoader = {
        0x110000, 0x08030000, bytes(taken.bootloader_bin), "bootloader.bin", 0, 1, &partitionTable};
    // clang-format on

    DBG << "ugrade_thread:" << QThread::currentThreadId();
    bool ok = stepSucceeded("hdl_connect", hdl_connect(&info, &report));
    if (ok)
        ok = stepSucceeded("hdl_download", hdl_download(&bootLoader));
    hdl_disconnect(HDL_DISCONNECT_FINISH);
    package = &downloadfile;
    emit signals_success(portName, ok);
}
