// A client with net/http. Its arguments, input and output are described in client_program.py. The
// workers share one client, as is usual.
package main

import (
	"bufio"
	"crypto/sha256"
	"crypto/tls"
	"crypto/x509"
	"fmt"
	"io"
	"net/http"
	"os"
	"strconv"
	"strings"
	"sync"
)

func send(client *http.Client, method, url string, header []string) string {
	request, err := http.NewRequest(method, url, nil)
	if err != nil {
		return "error " + err.Error()
	}
	if len(header) == 2 {
		request.Header.Set(header[0], header[1])
	}
	reply, err := client.Do(request)
	if err != nil {
		return "error " + err.Error()
	}
	defer reply.Body.Close()
	content, err := io.ReadAll(reply.Body)
	if err != nil {
		return "error " + err.Error()
	}
	return fmt.Sprintf("%d %d %x", reply.StatusCode, len(content), sha256.Sum256(content))
}

func sendAll(client *http.Client, method, url string, count, workers int, header []string) {
	var ended sync.WaitGroup
	var output sync.Mutex
	for worker := 0; worker < workers; worker++ {
		ended.Add(1)
		go func() {
			defer ended.Done()
			for number := 0; number < count/workers; number++ {
				line := send(client, method, url, header)
				output.Lock()
				fmt.Println(strings.ReplaceAll(line, "\n", " "))
				output.Unlock()
			}
		}()
	}
	ended.Wait()
}

func main() {
	certificate, err := os.ReadFile(os.Args[1])
	if err != nil {
		panic(err)
	}
	trusted := x509.NewCertPool()
	trusted.AppendCertsFromPEM(certificate)
	input := bufio.NewScanner(os.Stdin)
	for input.Scan() {
		fields := strings.Fields(input.Text())
		count, _ := strconv.Atoi(fields[2])
		workers, _ := strconv.Atoi(fields[3])
		client := &http.Client{Transport: &http.Transport{
			TLSClientConfig:   &tls.Config{RootCAs: trusted},
			DisableKeepAlives: os.Args[2] == "helped",
		}}
		sendAll(client, fields[0], fields[1], count, workers, fields[4:])
		client.CloseIdleConnections()
	}
}
