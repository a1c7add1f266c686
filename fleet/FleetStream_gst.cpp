#include "FleetStream.h"

#include "FleetSources_gst.h"
#include "FleetSockets.h"

#include <QTcpSocket>

#include <gst/rtsp-server/rtsp-server.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

const char FleetStream::path[] = "/live1";

namespace {

constexpr auto longestEnd = std::chrono::seconds(10);
constexpr guint sessionCheckSeconds = 2;
constexpr char socketKey[] = "vorlyn-socket"; // of a client

// Encoders that give one slice a picture at once, no B pictures, and no more work than needed.
constexpr char h264[] =
    "x264enc tune=zerolatency speed-preset=ultrafast threads=1 sliced-threads=false bframes=0 "
    "pass=quant quantizer=21 key-int-max=%1 option-string=slices=1:scenecut=0 "
    "! rtph264pay name=pay0 pt=96";
constexpr char h265[] =
    "x265enc tune=zerolatency speed-preset=ultrafast log-level=none qp=24 key-int-max=%1 "
    "option-string=pools=none:frame-threads=1:wpp=0:bframes=0:scenecut=0:ctu=16:rd=1 "
    "! rtph265pay name=pay0 pt=96";
constexpr char aac[] = "audioconvert ! avenc_aac bitrate=64000 ! rtpmp4gpay name=pay%1 pt=97";
constexpr char pcma[] = "alawenc ! rtppcmapay name=pay%1 pt=8";
constexpr char source[] = " appsrc name=%1 is-live=true format=time ! ";
constexpr char frames[] = "frames";
constexpr char tone[] = "tone";

// The media as the RTSP server's library takes it.
QByteArray pipelineOf(const FleetStreamShape &shape)
{
    const auto sourceOf = [](const char *name) {
        return QString::fromLatin1(source).arg(QLatin1String(name));
    };
    const bool hasVideo = shape.video != FleetStreamShape::NoVideo;
    QString text;
    if (hasVideo)
        text += sourceOf(frames)
            + QString::fromLatin1(shape.video == FleetStreamShape::H265 ? h265 : h264)
                  .arg(shape.fps);
    if (shape.audio != FleetStreamShape::NoAudio)
        text += sourceOf(tone)
            + QString::fromLatin1(shape.audio == FleetStreamShape::Pcma ? pcma : aac)
                  .arg(hasVideo ? 1 : 0);
    return '(' + text.toLatin1() + " )";
}

// The thread on which the library is started and its servers are made and ended. There is one, as
// long as anybody needs it.
class GstThread
{
public:
    static std::shared_ptr<GstThread> instance();

    GstThread();
    ~GstThread();

    void post(const std::function<void()> &task);
    void run(const std::function<void()> &task); // returns when it is done
    GMainContext *mainContext() const { return context; }

private:
    GMainContext *context;
    GMainLoop *loop;
    std::thread thread;
};

std::shared_ptr<GstThread> GstThread::instance()
{
    static std::weak_ptr<GstThread> present;
    std::shared_ptr<GstThread> thread = present.lock();
    if (!thread)
        present = thread = std::make_shared<GstThread>();
    return thread;
}

GstThread::GstThread() :
    context(g_main_context_new()),
    loop(g_main_loop_new(context, FALSE)),
    thread([this] {
        g_main_context_push_thread_default(context);
        gst_init(nullptr, nullptr);
        g_main_loop_run(loop);
        g_main_context_pop_thread_default(context);
    })
{ }

GstThread::~GstThread()
{
    post([this] { g_main_loop_quit(loop); });
    thread.join();
    g_main_loop_unref(loop);
    g_main_context_unref(context);
}

void GstThread::post(const std::function<void()> &task)
{
    GSource *source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    const auto call = [](gpointer data) -> gboolean {
        (*static_cast<std::function<void()> *>(data))();
        return G_SOURCE_REMOVE;
    };
    const auto drop = [](gpointer data) { delete static_cast<std::function<void()> *>(data); };
    g_source_set_callback(source, call, new std::function<void()>(task), drop);
    g_source_attach(source, context);
    g_source_unref(source);
}

void GstThread::run(const std::function<void()> &task)
{
    std::mutex mutex;
    std::condition_variable done;
    bool isDone = false;
    post([&] {
        task();
        const std::lock_guard<std::mutex> lock(mutex);
        isDone = true;
        done.notify_all();
    });
    std::unique_lock<std::mutex> lock(mutex);
    done.wait(lock, [&] { return isDone; });
}

// What outlives the stream in callbacks that are on their way.
class Watch
{
public:
    explicit Watch(const FleetStream::Report &report) : report(report) { }

    QString name() const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return nameInPicture;
    }
    void setName(const QString &name)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        nameInPicture = name;
    }
    void tell(const char *event, const char *what, QJsonObject more) const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!report)
            return;
        more[QStringLiteral("what")] = QLatin1String(what);
        report(event, more);
    }
    void begin()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ++lives;
    }
    void end()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        --lives;
        ended.notify_all();
    }
    // When all that began has ended; nothing is told after that.
    void close()
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (!ended.wait_for(lock, longestEnd, [this] { return lives == 0; }))
            g_warning("a stream has not ended");
        report = nullptr;
    }

private:
    mutable std::mutex mutex;
    std::condition_variable ended;
    int lives = 0;
    QString nameInPicture;
    FleetStream::Report report;
};

// The life of a viewer or of a running media, from its attachment to an object of the library to
// that object's end, which may come on any thread.
class Life
{
public:
    static void attach(gpointer object, Life *life)
    {
        g_object_set_data_full(
            G_OBJECT(object), key, life, [](gpointer data) { delete static_cast<Life *>(data); });
    }
    static const Life &of(gpointer object)
    {
        return *static_cast<Life *>(g_object_get_data(G_OBJECT(object), key));
    }

    Life(const std::shared_ptr<Watch> &watch, const char *event, const char *lastWhat,
        const QJsonObject &more) :
        watch(watch),
        event(event),
        lastWhat(lastWhat),
        more(more)
    {
        watch->begin();
    }
    ~Life()
    {
        tell(lastWhat);
        watch->end();
    }
    void tell(const char *what) const { watch->tell(event, what, more); }

private:
    static constexpr char key[] = "vorlyn-life";

    const std::shared_ptr<Watch> watch;
    const char *const event;
    const char *const lastWhat;
    const QJsonObject more;
};

// Of a viewer, for the journal.
QJsonObject keysOf(const char *ip, int port)
{
    return {{QStringLiteral("source"), QStringLiteral("%1:%2").arg(QLatin1String(ip)).arg(port)}};
}

// Watches a media in a viewer's place.
class StandingViewer
{
public:
    StandingViewer(GstRTSPServer *server, GstRTSPMediaFactory *factory);
    ~StandingViewer();

private:
    GstRTSPMedia *media;
    GPtrArray *transports;
};

StandingViewer::StandingViewer(GstRTSPServer *server, GstRTSPMediaFactory *factory) :
    transports(g_ptr_array_new_with_free_func(g_object_unref))
{
    GstRTSPUrl *url = nullptr;
    gst_rtsp_url_parse(
        (QByteArrayLiteral("rtsp://localhost") + FleetStream::path).constData(), &url);
    media = gst_rtsp_media_factory_construct(factory, url);
    gst_rtsp_url_free(url);
    if (!media) {
        g_warning("a stream could not be made: is a plugin missing?");
        return;
    }
    GstRTSPThreadPool *pool = gst_rtsp_server_get_thread_pool(server);
    if (!gst_rtsp_media_prepare(
            media, gst_rtsp_thread_pool_get_thread(pool, GST_RTSP_THREAD_TYPE_MEDIA, nullptr)))
        g_warning("a stream could not be started");
    g_object_unref(pool);
    for (guint i = 0; i < gst_rtsp_media_n_streams(media); ++i) {
        GstRTSPTransport *transport = nullptr;
        gst_rtsp_transport_new(&transport);
        transport->lower_transport = GST_RTSP_LOWER_TRANS_TCP;
        transport->interleaved = {int(2 * i), int(2 * i + 1)};
        GstRTSPStreamTransport *drain =
            gst_rtsp_stream_transport_new(gst_rtsp_media_get_stream(media, i), transport);
        const auto swallow = [](GstBuffer *, guint8, gpointer) -> gboolean { return TRUE; };
        gst_rtsp_stream_transport_set_callbacks(drain, swallow, swallow, nullptr, nullptr);
        g_ptr_array_add(transports, drain);
    }
    gst_rtsp_media_complete_pipeline(media, transports);
    gst_rtsp_media_set_state(media, GST_STATE_PLAYING, transports);
}

StandingViewer::~StandingViewer()
{
    if (media) {
        gst_rtsp_media_set_state(media, GST_STATE_NULL, transports);
        gst_rtsp_media_unprepare(media);
        g_object_unref(media);
    }
    g_ptr_array_unref(transports);
}

class StreamServer : public FleetStream
{
public:
    StreamServer(const FleetStreamShape &shape, const Report &report);
    ~StreamServer() override;

    void setName(const QString &name) override { watch->setName(name); }
    void serve(QTcpSocket &socket, const QHostAddress &viewer, quint16 port) override;

private:
    void open();
    void close();
    void configure(GstRTSPMedia *media) const;
    void meet(GstRTSPClient *client) const;

    const FleetStreamShape shape;
    const std::shared_ptr<Watch> watch;
    const std::shared_ptr<GstThread> thread;
    // The rest is the thread's, made when first needed.
    GstRTSPServer *server;
    GSource *sessionCheck;
    std::unique_ptr<StandingViewer> standing;
};

StreamServer::StreamServer(const FleetStreamShape &shape, const Report &report) :
    shape(shape),
    watch(std::make_shared<Watch>(report)),
    thread(GstThread::instance()),
    server(nullptr),
    sessionCheck(nullptr)
{
    if (shape.always)
        thread->post([this] { open(); });
}

StreamServer::~StreamServer()
{
    thread->run([this] { close(); });
    watch->close();
}

void StreamServer::open()
{
    server = gst_rtsp_server_new();
    GstRTSPMediaFactory *factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, pipelineOf(shape).constData());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    // One media for all viewers, under whatever address they know it.
    GST_RTSP_MEDIA_FACTORY_GET_CLASS(factory)->gen_key =
        [](GstRTSPMediaFactory *, const GstRTSPUrl *) { return g_strdup(path); };
    g_signal_connect(factory, "media-configure",
        G_CALLBACK(+[](GstRTSPMediaFactory *, GstRTSPMedia *media, const StreamServer *stream) {
            stream->configure(media);
        }),
        this);
    g_signal_connect(server, "client-connected",
        G_CALLBACK(+[](GstRTSPServer *, GstRTSPClient *client, const StreamServer *stream) {
            stream->meet(client);
        }),
        this);
    if (shape.always)
        standing = std::make_unique<StandingViewer>(server, factory);
    GstRTSPMountPoints *mounts = gst_rtsp_server_get_mount_points(server);
    gst_rtsp_mount_points_add_factory(mounts, path, factory); // which takes it over
    g_object_unref(mounts);

    // Viewers over UDP may go without a word.
    GstRTSPSessionPool *sessions = gst_rtsp_server_get_session_pool(server);
    sessionCheck = g_timeout_source_new_seconds(sessionCheckSeconds);
    const auto check = [](gpointer data) -> gboolean {
        gst_rtsp_session_pool_cleanup(GST_RTSP_SESSION_POOL(data));
        return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(sessionCheck, check, sessions, g_object_unref);
    g_source_attach(sessionCheck, thread->mainContext());
}

void StreamServer::close()
{
    if (!server)
        return;
    // Each ends on its own thread when it reads that.
    const auto drop = [](GstRTSPServer *, GstRTSPClient *client, gpointer) {
        g_socket_shutdown(
            G_SOCKET(g_object_get_data(G_OBJECT(client), socketKey)), TRUE, TRUE, nullptr);
        return GST_RTSP_FILTER_KEEP;
    };
    gst_rtsp_server_client_filter(server, drop, nullptr);
    standing.reset();
    g_source_destroy(sessionCheck);
    g_source_unref(sessionCheck);
    g_object_unref(server);
}

// Runs with each start of the media.
void StreamServer::configure(GstRTSPMedia *media) const
{
    auto *life = new Life(watch, "stream", "stopped", shape.description());
    Life::attach(media, life);
    life->tell("started");
    GstElement *bin = gst_rtsp_media_get_element(media);
    const auto attach = [bin](const char *name, FleetSource *source) {
        GstElement *element = gst_bin_get_by_name(GST_BIN(bin), name);
        FleetSource::attach(GST_APP_SRC(element), source);
        gst_object_unref(element);
    };
    if (shape.video != FleetStreamShape::NoVideo)
        attach(frames, new FleetFrames(shape, [watch = watch] { return watch->name(); }));
    if (shape.audio == FleetStreamShape::Aac)
        attach(tone, new FleetTone(48000, 1024));
    else if (shape.audio == FleetStreamShape::Pcma)
        attach(tone, new FleetTone(8000, 160));
    // The sources keep the time, so nothing has to wait behind them.
    GstElement *pipeline = GST_ELEMENT(gst_element_get_parent(bin));
    gst_pipeline_set_latency(GST_PIPELINE(pipeline), 0);
    gst_object_unref(pipeline);
    gst_object_unref(bin);
}

void StreamServer::meet(GstRTSPClient *client) const
{
    GstRTSPConnection *connection = gst_rtsp_client_get_connection(client);
    const GstRTSPUrl *url = gst_rtsp_connection_get_url(connection);
    g_object_set_data_full(G_OBJECT(client), socketKey,
        g_object_ref(gst_rtsp_connection_get_read_socket(connection)), g_object_unref);
    Life::attach(client, new Life(watch, "viewer", "left", keysOf(url->host, url->port)));
    g_signal_connect(client, "play-request",
        G_CALLBACK(+[](GstRTSPClient *client, GstRTSPContext *) { Life::of(client).tell("play"); }),
        nullptr);
    g_signal_connect(client, "teardown-request",
        G_CALLBACK(
            +[](GstRTSPClient *client, GstRTSPContext *) { Life::of(client).tell("teardown"); }),
        nullptr);
}

void StreamServer::serve(QTcpSocket &connection, const QHostAddress &viewer, quint16 port)
{
    connection.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    const qintptr descriptor = FleetSockets::duplicate(connection);
    connection.abort();
    const QByteArray ip = viewer.toString().toLatin1();
    thread->post([this, descriptor, ip, port] {
        if (!server)
            open();
        GSocket *socket = g_socket_new_from_fd(int(descriptor), nullptr);
        if (!socket
            || !gst_rtsp_server_transfer_connection(server, socket, ip.constData(), port, nullptr))
            watch->tell("viewer", "left", keysOf(ip.constData(), port)); // went at once
    });
}

}

bool FleetStream::isAvailable()
{
    return true;
}

std::unique_ptr<FleetStream> FleetStream::create(
    const FleetStreamShape &shape, const Report &report)
{
    return std::make_unique<StreamServer>(shape, report);
}
