import java.io.BufferedReader;
import java.io.ByteArrayInputStream;
import java.io.InputStreamReader;
import java.net.URI;
import java.net.http.HttpClient;
import java.net.http.HttpRequest;
import java.net.http.HttpResponse;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.KeyStore;
import java.security.MessageDigest;
import java.security.cert.CertificateFactory;
import java.util.HexFormat;
import java.util.concurrent.CountDownLatch;
import javax.net.ssl.SSLContext;
import javax.net.ssl.TrustManagerFactory;

// A client with java.net.http. Its arguments, input and output are described in client_program.py.
// The workers share one client, as is usual.
public class JavaClient {
    static SSLContext trusting(String certificate) throws Exception {
        var store = KeyStore.getInstance(KeyStore.getDefaultType());
        store.load(null, null);
        store.setCertificateEntry("gateway", CertificateFactory.getInstance("X.509")
                .generateCertificate(new ByteArrayInputStream(
                        Files.readAllBytes(Path.of(certificate)))));
        var factory = TrustManagerFactory.getInstance(TrustManagerFactory.getDefaultAlgorithm());
        factory.init(store);
        var context = SSLContext.getInstance("TLS");
        context.init(null, factory.getTrustManagers(), null);
        return context;
    }

    static String send(HttpClient client, HttpRequest request) {
        try {
            var reply = client.send(request, HttpResponse.BodyHandlers.ofByteArray());
            return reply.statusCode() + " " + reply.body().length + " " + HexFormat.of().formatHex(
                    MessageDigest.getInstance("SHA-256").digest(reply.body()));
        } catch (Exception error) {
            return "error " + error.toString().replace('\n', ' ');
        }
    }

    static void sendAll(SSLContext context, String[] fields) throws Exception {
        var client = HttpClient.newBuilder().version(HttpClient.Version.HTTP_1_1)
                .sslContext(context).build();
        var builder = HttpRequest.newBuilder(URI.create(fields[1]))
                .method(fields[0], HttpRequest.BodyPublishers.noBody());
        if (fields.length > 4) {
            builder.header(fields[4], fields[5]);
        }
        var request = builder.build();
        int count = Integer.parseInt(fields[2]);
        int workers = Integer.parseInt(fields[3]);
        var ended = new CountDownLatch(workers);
        for (int worker = 0; worker < workers; ++worker) {
            new Thread(() -> {
                for (int number = 0; number < count / workers; ++number) {
                    System.out.println(send(client, request));
                }
                ended.countDown();
            }).start();
        }
        ended.await();
    }

    public static void main(String[] arguments) throws Exception {
        if (arguments[1].equals("helped")) {
            System.setProperty("jdk.httpclient.enableAllMethodRetry", "true");
        }
        var context = trusting(arguments[0]);
        var input = new BufferedReader(new InputStreamReader(System.in));
        for (var line = input.readLine(); line != null; line = input.readLine()) {
            sendAll(context, line.split(" "));
        }
        System.exit(0);
    }
}
